#include "host/program/prompt.h"

#if defined(GIFHOST_LINE_EDITOR_READLINE)
#include <readline/history.h>
#include <readline/readline.h>
#elif defined(GIFHOST_LINE_EDITOR_LIBEDIT)
#include <editline/readline.h>
#endif

#include <cstdio>
#include <iostream>
#include <memory>
#include <optional>

#include "host/core/heap.h"
#include "host/lua/lua_error.h"
#include "host/lua/lua_object.h"

namespace host {
namespace {

#if defined(GIFHOST_LINE_EDITOR_NONE)

std::optional<std::string> ReadLine(const char* prompt) {
  std::string line;
  std::cout << prompt << std::flush;
  if (!std::getline(std::cin, line)) return std::nullopt;
  return line;
}

#else

std::optional<std::string> ReadLine(const char* prompt) {
  const std::unique_ptr<char, FreeMemory> line(readline(prompt));
  if (!line) return std::nullopt;
  if (*line != '\0') add_history(line.get());
  return std::string(line.get());
}

#endif

bool Load(lua_State* lua, const std::string& code) {
  return luaL_loadbufferx(lua, code.data(), code.size(), "=prompt", "t") == LUA_OK;
}

// Whether the message on the stack says that the code is only the beginning of something.
bool IsIncomplete(lua_State* lua) { return std::string_view(lua_tostring(lua, -1)).ends_with("<eof>"); }

// Leaves the function for the code on the stack, or the message why there is none.
bool LoadStatement(lua_State* lua, std::string code) {
  if (Load(lua, "return " + code)) return true;
  lua_pop(lua, 1);
  while (!Load(lua, code)) {
    if (!IsIncomplete(lua)) return false;
    const std::optional<std::string> more = ReadLine(">> ");
    if (!more) return false;
    lua_pop(lua, 1);
    code += "\n" + *more;
  }
  return true;
}

std::string Describe(lua_State* lua, int index) {
  if (const Ref<Object> object = ToObject(lua, index)) return object->Describe();
  std::string text = luaL_tolstring(lua, index, nullptr);
  lua_pop(lua, 1);
  return text;
}

// A table shows what it holds, one level deep, unless it says itself what it is, as exceptions do.
std::string DescribeResult(lua_State* lua, int index) {
  if (!lua_istable(lua, index) || lua_getmetatable(lua, index) != 0) return Describe(lua, index);
  std::string text;
  for (lua_pushnil(lua); lua_next(lua, index) != 0; lua_pop(lua, 1)) {
    const int value = lua_gettop(lua);
    text += text.empty() ? "{ " : ", ";
    if (lua_type(lua, value - 1) == LUA_TSTRING) text += Describe(lua, value - 1) + " = ";
    text += Describe(lua, value);
  }
  return text.empty() ? "{}" : text + " }";
}

// A function of Lua's, since values may say in a script's words what they are.
int PrintResults(lua_State* lua) {
  const int last = lua_gettop(lua);
  for (int i = 1; i <= last; ++i) std::printf("%s%s", i == 1 ? "" : "\t", DescribeResult(lua, i).c_str());
  if (last > 0) std::printf("\n");
  return 0;
}

}  // namespace

void RunPrompt(Script& script) {
  lua_State* lua = script.lua();
  std::printf("Ctrl-D ends the session; host.classes() tells what there is.\n");
  while (const std::optional<std::string> line = ReadLine("> ")) {
    lua_settop(lua, 0);
    lua_pushcfunction(lua, AddTraceback);
    bool succeeded = LoadStatement(lua, *line) && lua_pcall(lua, 0, LUA_MULTRET, 1) == LUA_OK;
    if (succeeded) {
      lua_pushcfunction(lua, Guarded<PrintResults>);
      lua_insert(lua, 2);
      succeeded = lua_pcall(lua, lua_gettop(lua) - 2, 0, 1) == LUA_OK;
    }
    if (!succeeded) std::fprintf(stderr, "%s\n", ErrorText(lua, -1).c_str());
  }
  std::printf("\n");
  lua_settop(lua, 0);
}

}  // namespace host
