#include "plugin/registration.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "bridge/definition_rows.h"
#include "bridge/host_functions.h"

uint32_t CurrentREALControlVersion = 13;
const char* gpartname = nullptr;

// Hosts from 2013.0 up to, not including, 3000.0 take extension and global methods as modules.
static bool HostTakesModules() { return HostIsAtLeast(2013.0) && !HostIsAtLeast(3000.0); }

uint32_t ControlVersionFor(double host_version) {
  if (host_version >= 2013.04) return 13;
  if (host_version >= 2013.03) return 12;
  if (host_version >= 2013.0) return 11;
  if (host_version >= 2012.0) return 10;
  return 9;
}

// --- Flags
// -----------------------------------------------------------------------------------------------------

uint32_t FixedFlags(uint32_t flags) {
  if (HostIsAtLeast(2010.029)) {
    if (flags & kPictureMember) flags |= kEverywhere;
    if (flags & kOtherMarker) flags |= kOtherMarked;
  }
  return flags & ~(kPictureMember | kOtherMarker);
}

template <typename Member>
static void FixMemberFlags(Member* members, int64_t count) {
  for (int64_t i = 0; members && i < count; ++i) members[i].flags = FixedFlags(members[i].flags);
}

void FixConsoleFlags(REALclassDefinition* definition) {
  definition->flags = FixedFlags(definition->flags);
  FixMemberFlags(definition->methods, definition->method_count);
  FixMemberFlags(definition->methods2, definition->method_count2);
  FixMemberFlags(definition->properties, definition->property_count);
  FixMemberFlags(definition->properties2, definition->property_count2);
}

// --- Declarations
// ----------------------------------------------------------------------------------------------

// Work space for one declaration; longer ones are cut.
constexpr size_t kDeclarationRoom = 1000;

static char* CopyText(const char* text) { return strdup(text); }

// The first `kept` characters of a declaration, then the text formed from `format`, cut to the work space.
template <typename... Arguments>
static char* Rewritten(const char* declaration, size_t kept, const char* format, Arguments... arguments) {
  char buffer[kDeclarationRoom] = {};
  kept = std::min(kept, kDeclarationRoom - 2);
  std::memcpy(buffer, declaration, kept);
  std::snprintf(buffer + kept, kDeclarationRoom - 1 - kept, format, arguments...);
  return CopyText(buffer);
}

char* AddClassParameter(const char* declaration, const char* class_name) {
  const size_t name_length = std::strcspn(declaration, " (");
  const char* rest = declaration + name_length;
  if (*rest == ' ') return Rewritten(declaration, name_length, "(extends ref as %s)%s", class_name, rest);
  if (*rest == '(') return Rewritten(declaration, name_length, "(extends ref as %s, %s", class_name, rest + 1);
  char buffer[kDeclarationRoom] = {};
  std::snprintf(buffer, sizeof buffer, "%s(extends ref as %s)", declaration, class_name);
  return CopyText(buffer);
}

char* AddAssignedParameter(const char* declaration) {
  if (const char* close = std::strchr(declaration, ')')) {
    return Rewritten(declaration, static_cast<size_t>(close - declaration), ", assigns value%s)", close + 1);
  }
  if (const char* blank = std::strchr(declaration, ' ')) {
    return Rewritten(declaration, static_cast<size_t>(blank - declaration), "(assigns value%s)", blank);
  }
  return nullptr;
}

// --- Registration
// ----------------------------------------------------------------------------------------------

void RegisterClass(REALclassDefinition* definition) {
  definition->instance_size = (definition->instance_size + 15) / 16 * 16;
  definition->version = CurrentREALControlVersion;
  REALRegisterClass(definition);
}

// A module definition and its methods are the host's for the life of the process once registered.
static REALmoduleDefinition* NewModule(int64_t method_count) {
  auto* module = static_cast<REALmoduleDefinition*>(std::calloc(1, sizeof(REALmoduleDefinition)));
  if (!module) return nullptr;
  const auto count = static_cast<size_t>(method_count);
  module->methods = static_cast<REALmethodDefinition*>(std::calloc(count, sizeof(REALmethodDefinition)));
  if (!module->methods) {
    std::free(module);
    return nullptr;
  }
  module->version = CurrentREALControlVersion;
  module->method_count = method_count;
  return module;
}

static void RegisterModule(REALmoduleDefinition* module, const char* name) {
  module->name = CopyText(name);
  if (module->name) REALRegisterModule(module);
}

static int64_t CountHandlers(const REALclassDefinition& extension) {
  int64_t count = 0;
  for (int64_t i = 0; i < extension.method_count; ++i) {
    count += extension.methods[i].handler ? 1 : 0;
    count += extension.methods[i].setter ? 1 : 0;
  }
  return count;
}

// A method of the extension as a module's: its declaration names the extended object as first parameter.
static bool EmitMethod(REALmethodDefinition*& next, const REALmethodDefinition& source, const char* class_name) {
  char* declaration = AddClassParameter(source.declaration, class_name);
  if (!declaration) return false;
  *next = source;
  next->setter = nullptr;
  next->declaration = declaration;
  next->flags |= kModuleMethod;
  ++next;
  return true;
}

// The same for its setter, which takes the assigned value as last parameter.
static bool EmitSetter(REALmethodDefinition*& next, const REALmethodDefinition& source, const char* class_name) {
  char* extended = AddClassParameter(source.declaration, class_name);
  char* declaration = extended ? AddAssignedParameter(extended) : nullptr;
  std::free(extended);
  if (!declaration) return false;
  *next = source;
  next->handler = source.setter;
  next->setter = nullptr;
  next->declaration = declaration;
  next->flags |= kModuleMethod;
  ++next;
  return true;
}

static void RegisterExtensionAsModule(const REALclassDefinition& extension) {
  if (!extension.methods || extension.method_count < 1) return;
  char name[100];
  std::snprintf(name, sizeof name, "%s%s%s", extension.name, gpartname, "ExtensionZKV");

  const int64_t count = CountHandlers(extension);
  REALmoduleDefinition* module = count < 1 ? nullptr : NewModule(count);
  if (!module) return;
  REALmethodDefinition* next = module->methods;
  for (int64_t i = 0; i < extension.method_count; ++i) {
    const REALmethodDefinition& source = extension.methods[i];
    // Giving up leaves what was made so far: it happens once in a process at most.
    if (source.setter && !EmitSetter(next, source, extension.name)) return;   // NOLINT(*unix.Malloc)
    if (source.handler && !EmitMethod(next, source, extension.name)) return;  // NOLINT(*unix.Malloc)
  }
  RegisterModule(module, name);
}

void RegisterClassExtension(REALclassDefinition* extension) {
  if (HostTakesModules()) {
    RegisterExtensionAsModule(*extension);
    return;
  }
  extension->version = CurrentREALControlVersion;
  REALRegisterClassExtension(extension);
}

void RegisterGlobalMethods(REALmethodDefinition* methods, int64_t count) {
  if (!HostTakesModules()) {
    for (int64_t i = 0; i < count; ++i) REALRegisterMethod(&methods[i]);
    return;
  }
  char name[100];
  std::snprintf(name, sizeof name, "%s%s", gpartname, "GlobalsZKV");
  REALmoduleDefinition* module = NewModule(count);
  if (!module) return;
  for (int64_t i = 0; i < count; ++i) {
    module->methods[i] = methods[i];
    module->methods[i].flags |= kModuleMethod;
  }
  RegisterModule(module, name);
}
