#include "host/lua/lua_globals.h"

#include "host/core/text.h"
#include "host/host/host.h"
#include "host/lua/lua_method.h"
#include "host/lua/lua_object.h"
#include "host/lua/lua_value.h"

namespace host {
namespace {

constexpr const char* kMetatable = "host.class";

struct ClassValue {
  const Class* known;
};

const Class& CheckClass(lua_State* lua) {
  return *static_cast<ClassValue*>(luaL_checkudata(lua, 1, kMetatable))->known;
}

int New(lua_State* lua) {
  const Class& wanted = CheckClass(lua);
  PushObject(lua, Host::Current().New(wanted.name, ToValues(lua, 2, lua_gettop(lua))));
  return 1;
}

int ClassToText(lua_State* lua) {
  PushString(lua, Text("class ", CheckClass(lua).name));
  return 1;
}

void PushClass(lua_State* lua, const Class& wanted) {
  static_cast<ClassValue*>(lua_newuserdatauv(lua, sizeof(ClassValue), 0))->known = &wanted;
  if (luaL_newmetatable(lua, kMetatable) != 0) {
    const luaL_Reg functions[] = {{"__call", Guarded<New>}, {"__tostring", Guarded<ClassToText>}, {nullptr, nullptr}};
    luaL_setfuncs(lua, functions, 0);
  }
  lua_setmetatable(lua, -2);
}

// Asked for a global that no script has set.
int FindGlobal(lua_State* lua) {
  if (lua_type(lua, 2) != LUA_TSTRING) return 0;
  const char* name = lua_tostring(lua, 2);
  Host& host = Host::Current();
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
  lua_pushglobaltable(lua);
  lua_createtable(lua, 0, 1);
  lua_pushcfunction(lua, Guarded<FindGlobal>);
  lua_setfield(lua, -2, "__index");
  lua_setmetatable(lua, -2);
  lua_pop(lua, 1);
}

}  // namespace host
