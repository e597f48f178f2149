#include "host/prompt.h"

#include <readline/history.h>
#include <readline/readline.h>

#include <cstdio>
#include <memory>
#include <optional>

#include "host/heap.h"
#include "host/lua_error.h"
#include "host/lua_object.h"
#include "host/lua_value.h"

namespace host {
namespace {

std::optional<std::string> ReadLine(const char* prompt) {
  const std::unique_ptr<char, FreeMemory> line(readline(prompt));
  if (!line) return std::nullopt;
  if (*line != '\0') add_history(line.get());
  return std::string(line.get());
}

bool Load(lua_State* lua, const std::string& code) {
  return luaL_loadbuffer(lua, code.data(), code.size(), "=prompt") == LUA_OK;
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

void PrintResults(lua_State* lua, int first) {
  for (int i = first; i <= lua_gettop(lua); ++i) {
    const Ref<Object>* object = TestObject(lua, i);
    const std::string text = object != nullptr ? (*object)->Describe() : luaL_tolstring(lua, i, nullptr);
    if (object == nullptr) lua_pop(lua, 1);
    std::printf("%s%s", i == first ? "" : "\t", text.c_str());
  }
  if (lua_gettop(lua) >= first) std::printf("\n");
}

}  // namespace

void RunPrompt(Script& script) {
  lua_State* lua = script.lua();
  std::printf("Ctrl-D ends the session; host.classes() tells what there is.\n");
  while (const std::optional<std::string> line = ReadLine("> ")) {
    lua_settop(lua, 0);
    lua_pushcfunction(lua, AddTraceback);
    if (LoadStatement(lua, *line) && lua_pcall(lua, 0, LUA_MULTRET, 1) == LUA_OK) {
      PrintResults(lua, 2);
    } else {
      std::fprintf(stderr, "%s\n", luaL_tolstring(lua, -1, nullptr));
    }
  }
  std::printf("\n");
  lua_settop(lua, 0);
}

}  // namespace host
