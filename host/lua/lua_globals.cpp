#include "host/lua/lua_globals.h"

#include "host/core/text.h"
#include "host/host/dispatch.h"
#include "host/lua/lua_error.h"
#include "host/lua/lua_method.h"
#include "host/lua/lua_object.h"
#include "host/lua/lua_plugin.h"
#include "host/lua/lua_state.h"
#include "host/lua/lua_text.h"
#include "host/lua/lua_value.h"

namespace host {
namespace {

constexpr const char* kMetatable = "host.class";

struct ClassValue {
  const Class* known;
};

const Class& RequireClassValue(lua_State* lua) {
  const auto* value = static_cast<ClassValue*>(luaL_testudata(lua, 1, kMetatable));
  if (value == nullptr) throw UsageError(Text("a class is needed, not ", WithArticle(luaL_typename(lua, 1))));
  return *value->known;
}

int New(lua_State* lua) {
  const Class& wanted = RequireClassValue(lua);
  PushObject(lua, NewObject(HostOf(lua), wanted.name, ToValues(lua, 2, lua_gettop(lua))));
  return 1;
}

int ClassToText(lua_State* lua) {
  PushString(lua, Text("class ", RequireClassValue(lua).name));
  return 1;
}

void PushClass(lua_State* lua, const Class& wanted) {
  static_cast<ClassValue*>(lua_newuserdatauv(lua, sizeof(ClassValue), 0))->known = &wanted;
  luaL_setmetatable(lua, kMetatable);
}

// Asked for a global that no script has set.
int FindGlobal(lua_State* lua) {
  if (lua_type(lua, 1) != LUA_TTABLE || lua_type(lua, 2) != LUA_TSTRING) return 0;
  size_t length = 0;
  const char* text = lua_tolstring(lua, 2, &length);
  const std::string_view name(text, length);
  LoadPlugin(lua);
  Host& host = HostOf(lua);
  if (const Class* found = host.FindClass(name)) {
    PushClass(lua, *found);
  } else if (const MemberGroup* group = host.globals().Find(name)) {
    PushGlobalMethod(lua, *group);
  } else {
    return 0;
  }
  lua_pushvalue(lua, 2);
  lua_pushvalue(lua, -2);
  lua_rawset(lua, 1);  // found at once the next time
  return 1;
}

}  // namespace

void OpenHostGlobals(lua_State* lua) {
  luaL_newmetatable(lua, kMetatable);
  const luaL_Reg functions[] = {{"__call", Guarded<New>}, {"__tostring", Guarded<ClassToText>}, {nullptr, nullptr}};
  luaL_setfuncs(lua, functions, 0);
  lua_pushboolean(lua, 0);
  lua_setfield(lua, -2, "__metatable");
  lua_pop(lua, 1);

  lua_pushglobaltable(lua);
  lua_createtable(lua, 0, 1);
  lua_pushcfunction(lua, Guarded<FindGlobal>);
  lua_setfield(lua, -2, "__index");
  lua_setmetatable(lua, -2);
  lua_pop(lua, 1);
}

}  // namespace host
