#include "host/lua/lua_error.h"

#include "host/lua/lua_value.h"

namespace host {
namespace {

constexpr const char* kMetatable = "host.exception";

std::string Field(lua_State* lua, const char* name) {
  lua_getfield(lua, 1, name);
  size_t length = 0;
  const char* text = luaL_tolstring(lua, -1, &length);
  std::string field(text, length);
  lua_pop(lua, 2);
  return field;
}

int ToText(lua_State* lua) {
  PushString(lua, Field(lua, "where") + Field(lua, "class") + ": " + Field(lua, "message"));
  return 1;
}

void SetField(lua_State* lua, const char* name, std::string_view text) {
  PushString(lua, text);
  lua_setfield(lua, -2, name);
}

}  // namespace

void PushException(lua_State* lua, const RaisedException& raised) {
  lua_createtable(lua, 0, 4);
  SetField(lua, "class", raised.class_name);
  SetField(lua, "message", raised.message);
  lua_pushinteger(lua, raised.number);
  lua_setfield(lua, -2, "number");
  luaL_where(lua, 1);
  lua_setfield(lua, -2, "where");
  if (luaL_newmetatable(lua, kMetatable) != 0) {
    lua_pushcfunction(lua, Guarded<ToText>);
    lua_setfield(lua, -2, "__tostring");
    lua_pushstring(lua, "exception");
    lua_setfield(lua, -2, "__name");
  }
  lua_setmetatable(lua, -2);
}

int AddTraceback(lua_State* lua) {
  const char* message = luaL_tolstring(lua, 1, nullptr);
  luaL_traceback(lua, lua, message, 1);
  return 1;
}

}  // namespace host
