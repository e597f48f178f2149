// The plugin's one exported function.

#include "bridge/host_functions.h"
#include "classes/block_class.h"
#include "classes/data_class.h"
#include "classes/document_class.h"
#include "classes/extension_class.h"
#include "classes/palette_class.h"
#include "classes/picture_class.h"
#include "classes/screen_class.h"
#include "platform/compiler.h"
#include "plugin/definitions.h"
#include "plugin/registration.h"

static void AskHostVersion() {
  const auto version = reinterpret_cast<double (*)()>(ResolveHostFunction("REALGetRBVersion"));
  if (version) rbversion_rbversion = version();
}

static void TellControlVersion() {
  CallOrNeutral<void>(ResolveHostFunction("RegisterPluginVersion"), static_cast<int32_t>(CurrentREALControlVersion));
}

// Called once by the host, before any script runs. The resolver gives a host function's address by its name,
// or null when the host has none; it is kept for the life of the process. Registers everything that scripts
// see.
extern "C" GIF_EXPORTED void REALPluginMain(REALresolver resolver) {
  gResolver = resolver;
  AskHostVersion();
  CurrentREALControlVersion = ControlVersionFor(rbversion_rbversion);
  TellControlVersion();
  gpartname = "GIF";
  FillDefinitions();

  REALclassDefinition* const classes[] = {&GifClass,       &GifPictureClass, &GifDataClass,     &GifBlockClass,
                                          &GifScreenClass, &GifPaletteClass, &GifExtensionClass};
  for (REALclassDefinition* definition : classes) FixConsoleFlags(definition);
  FixConsoleFlags(&folderitem2Class3);
  for (REALmethodDefinition& method : globalMethods) method.flags = FixedFlags(method.flags);

  for (REALclassDefinition* definition : classes) RegisterClass(definition);
  RegisterClassExtension(&folderitem2Class3);
  RegisterGlobalMethods(globalMethods, 2);
}
