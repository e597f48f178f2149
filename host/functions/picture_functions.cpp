// The host functions for pictures.

#include "host/functions/host_call.h"
#include "host/functions/host_functions.h"
#include "host/host/picture.h"

namespace host {
namespace {

REALpictureStruct* newPicture(int32_t width, int32_t height, int32_t depth) {
  HostCall call("newPicture", width, height, depth);
  if (call.fails()) return nullptr;
  return call.HandOut<REALpictureStruct>(NewPicture(call.host(), width, height));
}

int64_t PluginPictureGetType(REALpictureStruct* picture) {
  HostCall call("PluginPictureGetType", picture);
  const HostOptions& options = call.host().options();
  if (call.Find<Picture>(picture) == nullptr) return 0;
  const bool desktop = options.pictures == PictureKind::kDesktop;
  return call.Result(options.picture_type.value_or(desktop ? kPictureKindCGBitmapContext : kPictureKindGDImage));
}

int8_t REALLockPictureDescription(REALpictureStruct* picture, REALpictureDescription* description, int32_t kind) {
  HostCall call("REALLockPictureDescription", picture, description, kind);
  Picture* found = call.Find<Picture>(picture);
  const bool locked = !call.fails() && found != nullptr && description != nullptr &&
                      found->LockDescription(static_cast<uint32_t>(kind), *description);
  return call.Result<int8_t>(locked);
}

void unlockPictureDescription(REALpictureStruct* picture) {
  HostCall call("unlockPictureDescription", picture);
  if (Picture* found = call.Find<Picture>(picture)) found->UnlockDescription();
}

void REALPictureClearCache(REALpictureStruct* picture) {
  HostCall call("REALPictureClearCache", picture);
  call.Find<Picture>(picture);  // nothing is cached here; the handle must be good all the same
}

REALpictureStruct* REALGetPictureMask(REALpictureStruct* picture, int32_t create) {
  HostCall call("REALGetPictureMask", picture, create);
  Picture* found = call.Find<Picture>(picture);
  if (call.fails() || found == nullptr) return nullptr;
  return call.HandOut<REALpictureStruct>(create == 1 ? found->MakeMask(call.host()) : found->mask());
}

REALobjectStruct* pluginPictureGraphicsGetter(REALpictureStruct* picture) {
  HostCall call("pluginPictureGraphicsGetter", picture);
  Picture* found = call.Find<Picture>(picture);
  if (call.fails() || found == nullptr) return nullptr;
  return call.HandOut<REALobjectStruct>(NewGraphics(call.host(), Ref<Picture>(found)));
}

}  // namespace

std::span<const HostFunction> PictureFunctions() {
  static const HostFunction functions[] = {
      Offered<newPicture>("newPicture"),
      Offered<PluginPictureGetType>("PluginPictureGetType"),
      Offered<REALLockPictureDescription>("REALLockPictureDescription"),
      Offered<unlockPictureDescription>("unlockPictureDescription"),
      Offered<REALPictureClearCache>("REALPictureClearCache"),
      Offered<REALGetPictureMask>("REALGetPictureMask"),
      Offered<pluginPictureGraphicsGetter>("pluginPictureGraphicsGetter"),
  };
  return functions;
}

}  // namespace host
