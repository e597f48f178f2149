#include "host/lua/lua_host_table.h"

#include <algorithm>
#include <filesystem>
#include <string>

#include "host/host/path.h"
#include "host/lua/lua_error.h"
#include "host/lua/lua_files.h"
#include "host/lua/lua_object.h"
#include "host/lua/lua_pixels.h"
#include "host/lua/lua_plugin.h"
#include "host/lua/lua_state.h"
#include "host/lua/lua_text.h"

namespace host {
namespace {

void SetText(lua_State* lua, const char* field, std::string_view text) {
  PushString(lua, text);
  lua_setfield(lua, -2, field);
}

void SetInteger(lua_State* lua, const char* field, int64_t value) {
  lua_pushinteger(lua, value);
  lua_setfield(lua, -2, field);
}

void SetBoolean(lua_State* lua, const char* field, bool value) {
  lua_pushboolean(lua, value ? 1 : 0);
  lua_setfield(lua, -2, field);
}

void Append(lua_State* lua) { lua_rawseti(lua, -2, static_cast<lua_Integer>(lua_rawlen(lua, -2)) + 1); }

int Classes(lua_State* lua) {
  lua_newtable(lua);
  for (const auto& [name, known] : HostOf(lua).classes()) {
    PushString(lua, known->name);
    Append(lua);
  }
  return 1;
}

void PushProperty(lua_State* lua, const Property& property) {
  lua_newtable(lua);
  SetText(lua, "name", property.name);
  SetText(lua, "type", property.type.name);
  SetInteger(lua, "flags", property.flags);
  SetBoolean(lua, "readonly", property.setter == nullptr);
  SetBoolean(lua, "native", property.native);
}

void PushMethod(lua_State* lua, const Method& method) {
  lua_newtable(lua);
  SetText(lua, "name", method.declaration.name);
  SetText(lua, "declaration", method.text);
  SetInteger(lua, "flags", method.flags);
  SetBoolean(lua, "assignable", method.setter != nullptr);
  SetBoolean(lua, "native", method.native);
}

void SetMembers(lua_State* lua, const MemberTable& members) {
  lua_newtable(lua);
  for (const auto& [name, group] : members.all()) {
    if (!group.property) continue;
    PushProperty(lua, *group.property);
    Append(lua);
  }
  lua_setfield(lua, -2, "properties");
  lua_newtable(lua);
  for (const auto& [name, group] : members.all()) {
    for (const auto& method : group.overloads) {
      PushMethod(lua, *method);
      Append(lua);
    }
  }
  lua_setfield(lua, -2, "methods");
}

// host.describe(class name) or host.describe() for the global methods.
int Describe(lua_State* lua) {
  Host& host = HostOf(lua);
  if (lua_isnoneornil(lua, 1)) {
    lua_newtable(lua);
    SetMembers(lua, host.globals());
    return 1;
  }
  const Class& wanted = host.RequireClass(luaL_checkstring(lua, 1));
  lua_newtable(lua);
  SetText(lua, "name", wanted.name);
  if (wanted.superclass != nullptr) SetText(lua, "superclass", wanted.superclass->name);
  if (const REALclassDefinition* definition = wanted.definition) {
    SetInteger(lua, "version", definition->version);
    SetInteger(lua, "flags", definition->flags);
    SetInteger(lua, "size", definition->instance_size);
    SetInteger(lua, "offset", definition->instance_offset);
  }
  SetMembers(lua, wanted.members);
  return 1;
}

int Modules(lua_State* lua) {
  lua_newtable(lua);
  for (const Module& module : HostOf(lua).modules()) {
    lua_newtable(lua);
    SetText(lua, "name", module.name);
    SetInteger(lua, "version", module.version);
    lua_newtable(lua);
    for (const std::string& declaration : module.declarations) {
      PushString(lua, declaration);
      Append(lua);
    }
    lua_setfield(lua, -2, "methods");
    Append(lua);
  }
  return 1;
}

int Live(lua_State* lua) {
  lua_gc(lua, LUA_GCCOLLECT);
  lua_newtable(lua);
  for (const Heap::LiveCount& count : HostOf(lua).heap().Live()) {
    SetInteger(lua, count.type_name.c_str(), count.count);
  }
  return 1;
}

// host.calls(name): how often that host function was called, and how often it was asked for by name.
int Calls(lua_State* lua) {
  const Host::CallCount& count = HostOf(lua).call_count(luaL_checkstring(lua, 1));
  lua_pushinteger(lua, count.called);
  lua_pushinteger(lua, count.resolved);
  return 2;
}

// host.fail(name [, n]): the n-th call of that host function from now on fails, once.
int Fail(lua_State* lua) {
  Host::CallCount& count = HostOf(lua).call_count(luaL_checkstring(lua, 1));
  constexpr lua_Integer kMost = 1'000'000'000'000;
  count.failing_call = count.called + std::clamp<lua_Integer>(luaL_optinteger(lua, 2, 1), 0, kMost);
  return 0;
}

int Exists(lua_State* lua) {
  size_t length = 0;
  const char* path = luaL_checklstring(lua, 1, &length);
  RequirePath({path, length});
  std::error_code error;
  lua_pushboolean(lua, std::filesystem::exists(path, error) ? 1 : 0);
  return 1;
}

int ClassName(lua_State* lua) {
  const Ref<Object> object = ToObject(lua, 1);
  if (!object) return 0;
  PushString(lua, object->type_name());
  return 1;
}

}  // namespace

void OpenHostTable(lua_State* lua) {
  const luaL_Reg functions[] = {
      {"classes", Guarded<Classes>}, {"describe", Guarded<Describe>}, {"modules", Guarded<Modules>},
      {"live", Guarded<Live>},       {"calls", Guarded<Calls>},       {"fail", Guarded<Fail>},
      {"exists", Guarded<Exists>},   {"class", Guarded<ClassName>},   {nullptr, nullptr},
  };
  luaL_newlib(lua, functions);
  AddFileFunctions(lua);
  AddPixelFunctions(lua);
  const Host& host = HostOf(lua);
  if (host.options().version) {
    lua_pushnumber(lua, *host.options().version);
    lua_setfield(lua, -2, "version");
  }
  SetText(lua, "pictures", host.options().pictures == PictureKind::kDesktop ? "desktop" : "console");
  AddPluginFunctions(lua);
  lua_setglobal(lua, "host");
}

}  // namespace host
