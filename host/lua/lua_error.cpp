#include "host/lua/lua_error.h"

#include <string>
#include <vector>

#include "host/core/names.h"
#include "host/core/text.h"
#include "host/host/errors.h"
#include "host/host/value.h"
#include "host/lua/lua_text.h"

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
  luaL_checktype(lua, 1, LUA_TTABLE);
  PushString(lua, Field(lua, "where") + Field(lua, "class") + ": " + Field(lua, "message"));
  return 1;
}

int AsText(lua_State* lua) {
  luaL_tolstring(lua, 1, nullptr);
  return 1;
}

void SetField(lua_State* lua, const char* name, std::string_view text) {
  PushString(lua, text);
  lua_setfield(lua, -2, name);
}

void PushException(lua_State* lua, const RaisedException& raised) {
  lua_createtable(lua, 0, 4);
  SetField(lua, "class", raised.class_name);
  SetField(lua, "message", raised.message);
  lua_pushinteger(lua, raised.number);
  lua_setfield(lua, -2, "number");
  PushWhere(lua);
  lua_setfield(lua, -2, "where");
  luaL_setmetatable(lua, kMetatable);
}

}  // namespace

void OpenErrors(lua_State* lua) {
  luaL_newmetatable(lua, kMetatable);
  lua_pushcfunction(lua, Guarded<ToText>);
  lua_setfield(lua, -2, "__tostring");
  lua_pushstring(lua, "exception");
  lua_setfield(lua, -2, "__name");
  lua_pop(lua, 1);
}

void PushWhere(lua_State* lua) {
  lua_Debug at = {};
  for (int level = 1; lua_getstack(lua, level, &at) != 0; ++level) {
    lua_getinfo(lua, "Sl", &at);
    if (at.currentline <= 0) continue;
    lua_pushfstring(lua, "%s:%d: ", at.short_src, at.currentline);
    return;
  }
  lua_pushliteral(lua, "");
}

void PushError(lua_State* lua, const std::exception& error) {
  if (const auto* raised = dynamic_cast<const RaisedException*>(&error)) return PushException(lua, *raised);
  PushWhere(lua);
  lua_pushstring(lua, error.what());
  lua_concat(lua, 2);
}

std::string ErrorText(lua_State* lua, int index) {
  lua_pushvalue(lua, index);
  lua_pushcfunction(lua, AsText);
  lua_insert(lua, -2);
  const bool told = lua_pcall(lua, 1, 1, 0) == LUA_OK;
  size_t length = 0;
  const char* text = told ? lua_tolstring(lua, -1, &length) : nullptr;
  std::string message = text != nullptr
                            ? std::string(text, length)
                            : Text("an error that can't say what it is, ", WithArticle(luaL_typename(lua, index)));
  lua_pop(lua, 1);
  return message;
}

std::string SuggestGlobal(lua_State* lua, const std::string& wanted) {
  std::vector<std::string> known;
  for (const auto& [name, known_class] : HostOf(lua).classes()) known.push_back(known_class->name);
  for (const auto& [name, group] : HostOf(lua).globals().all()) known.push_back(group.name);
  lua_pushglobaltable(lua);
  for (lua_pushnil(lua); lua_next(lua, -2) != 0; lua_pop(lua, 1)) {
    if (lua_type(lua, -2) == LUA_TSTRING) known.emplace_back(lua_tostring(lua, -2));
  }
  lua_pop(lua, 1);
  const std::string nearest = NearestName(wanted, known);
  return nearest.empty() ? "" : Text("; did you mean \"", nearest, "\"?");
}

namespace {

// Lua's message about a value that is nil names the global.
std::string Suggestion(lua_State* lua, const std::string& message) {
  constexpr std::string_view kBefore = "a nil value (global '";
  const size_t at = message.find(kBefore);
  const bool made_already =
      message.find("; did you mean") != std::string::npos;  // the error went through here before
  if (at == std::string::npos || made_already) return "";
  const size_t begin = at + kBefore.size();
  return SuggestGlobal(lua, message.substr(begin, message.find('\'', begin) - begin));
}

}  // namespace

int AddTraceback(lua_State* lua) {
  lua_settop(lua, 1);
  const std::string message = ErrorText(lua, 1);
  luaL_traceback(lua, lua, (message + Suggestion(lua, message)).c_str(), 1);
  return 1;
}

}  // namespace host
