#include "host/program/prompt.h"

#include <csignal>
#include <cstdio>
#include <string>
#include <string_view>

#include "host/core/messages.h"
#include "host/lua/lua_error.h"
#include "host/lua/lua_text.h"
#include "host/program/completion.h"
#include "host/program/line_editor.h"

namespace host {
namespace {

constexpr const char* kDescribe = "host.prompt.describe";  // in the registry; nil when there is no library

// --- Ctrl-C while a line runs
// ----------------------------------------------------------------------------------------

lua_State* running = nullptr;
struct sigaction before_running = {};

void Stop(lua_State* lua, lua_Debug* /*at*/) {
  lua_sethook(lua, nullptr, 0, 0);
  luaL_error(lua, "interrupted");
}

// Once the script is asked to stop; the second time whatever runs outside Lua is ended with the program.
void Interrupt(int /*number*/) {
  sigaction(SIGINT, &before_running, nullptr);
  lua_sethook(running, Stop, LUA_MASKCALL | LUA_MASKRET | LUA_MASKCOUNT, 1);
}

class Stoppable {
 public:
  explicit Stoppable(lua_State* lua) {
    running = lua;
    struct sigaction now = {};
    now.sa_handler = Interrupt;
    sigaction(SIGINT, &now, &before_running);
  }
  ~Stoppable() {
    sigaction(SIGINT, &before_running, nullptr);
    lua_sethook(running, nullptr, 0, 0);
  }
  Stoppable(const Stoppable&) = delete;
  Stoppable& operator=(const Stoppable&) = delete;
};

// --- Lines
// -----------------------------------------------------------------------------------------------------------

bool Load(lua_State* lua, const std::string& code) {
  return luaL_loadbufferx(lua, code.data(), code.size(), "=prompt", "t") == LUA_OK;
}

// Whether the message on the stack says that the code is only the beginning of something.
bool IsIncomplete(lua_State* lua) { return std::string_view(lua_tostring(lua, -1)).ends_with("<eof>"); }

// Reads a statement or an expression, of as many lines as it takes.
LineEnd ReadStatement(lua_State* lua, std::string& code) {
  LineEnd end = ReadLine("> ", code);
  while (end == LineEnd::kEntered) {
    const bool is_whole = Load(lua, "return " + code) || Load(lua, code) || !IsIncomplete(lua);
    lua_settop(lua, 0);
    if (is_whole) break;
    std::string more;
    end = ReadLine(">> ", more);
    code += "\n" + more;
    if (end == LineEnd::kNoMore) return LineEnd::kEntered;  // it is told what is missing
  }
  return end;
}

// --- Results
// ---------------------------------------------------------------------------------------------------------

// What the library says of the value; the last colour that the plugin gave is one, the same number elsewhere is none.
std::string Describe(lua_State* lua, int index, const std::string& line) {
  const ScriptContext& context = ContextOf(lua);
  if (lua_getfield(lua, LUA_REGISTRYINDEX, kDescribe) == LUA_TFUNCTION) {
    lua_pushvalue(lua, index);
    PushString(lua, line);
    const bool is_color = lua_isinteger(lua, index) != 0 && context.last_color == lua_tointeger(lua, index);
    lua_pushboolean(lua, is_color ? 1 : 0);
    lua_call(lua, 3, 1);
  } else {
    lua_pop(lua, 1);
    lua_pushvalue(lua, index);
  }
  std::string text = luaL_tolstring(lua, -1, nullptr);
  lua_pop(lua, 2);
  return text;
}

// A function of Lua's, since values may say in a script's words what they are. The upvalue is the line.
int PrintResults(lua_State* lua) {
  const std::string line = lua_tostring(lua, lua_upvalueindex(1));
  const int last = lua_gettop(lua);
  for (int i = 1; i <= last; ++i) std::printf("%s%s", i == 1 ? "" : "\t", Describe(lua, i, line).c_str());
  if (last > 0) std::printf("\n");
  return 0;
}

// A name alone that stands for nothing is most likely misspelt.
void PrintNothing(lua_State* lua, const std::string& name) {
  std::printf("nil%s\n", SuggestGlobal(lua, name).c_str());
}

bool IsNothing(lua_State* lua, const std::string& line) {
  return lua_gettop(lua) == 2 && lua_isnil(lua, 2) &&
         line.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ_") == std::string::npos;
}

// Of an error in the line itself the line is all that a traceback tells.
std::string WithoutOwnTraceback(std::string message) {
  constexpr std::string_view kTraceback = "\nstack traceback:";
  const size_t at = message.find(kTraceback);
  if (at == std::string::npos) return message;
  for (size_t begin = at + kTraceback.size(); begin < message.size();) {
    const size_t end = std::min(message.find('\n', begin + 1), message.size());
    const std::string_view line = std::string_view(message).substr(begin, end - begin);
    if (line.find("[C]:") == std::string_view::npos && line.find("prompt:") == std::string_view::npos) return message;
    begin = end;
  }
  return message.substr(0, at);
}

void Run(lua_State* lua, const std::string& line) {
  const Stoppable stoppable(lua);
  ContextOf(lua).last_color.reset();
  lua_pushcfunction(lua, AddTraceback);
  bool succeeded = Load(lua, "return " + line);
  if (!succeeded) {
    lua_pop(lua, 1);
    succeeded = Load(lua, line);
  }
  succeeded = succeeded && lua_pcall(lua, 0, LUA_MULTRET, 1) == LUA_OK;
  if (succeeded && IsNothing(lua, line)) return PrintNothing(lua, line);
  if (succeeded) {
    PushString(lua, line);
    lua_pushcclosure(lua, Guarded<PrintResults>, 1);
    lua_insert(lua, 2);
    succeeded = lua_pcall(lua, lua_gettop(lua) - 2, 0, 1) == LUA_OK;
  }
  std::fflush(stdout);
  if (!succeeded) std::fprintf(stderr, "%s\n", Shown(WithoutOwnTraceback(ErrorText(lua, -1)), "\n\t").c_str());
}

// Globals of the library's module for prompts, such as help.
void TakeWords(lua_State* lua) {
  if (luaL_dostring(lua,
                    "local found, prompt = pcall(require, 'prompt')\n"
                    "if not found then return nil, not prompt:find('^module') and prompt or nil end\n"
                    "for name, word in pairs(prompt.words) do _G[name] = word end\n"
                    "return prompt.describe") != LUA_OK ||
      lua_isstring(lua, -1) != 0) {
    std::fprintf(stderr, "%s\n", ErrorText(lua, -1).c_str());
    lua_pushnil(lua);
  } else {
    lua_settop(lua, 1);
  }
  lua_setfield(lua, LUA_REGISTRYINDEX, kDescribe);
  lua_settop(lua, 0);
}

}  // namespace

void RunPrompt(Script& script) {
  lua_State* lua = script.lua();
  TakeWords(lua);
  SetCompleter([lua](const std::string& line, std::vector<std::string>& candidates) {
    try {
      return Complete(lua, line, candidates);
    } catch (const std::exception&) {  // there is no plugin
      lua_settop(lua, 0);
      return true;
    }
  });
  std::printf("Ctrl-D ends the session; help tells what there is.\n");
  for (;;) {
    std::string line;
    const LineEnd end = ReadStatement(lua, line);
    if (end == LineEnd::kNoMore) break;
    if (end == LineEnd::kEntered) Run(lua, line);
    lua_settop(lua, 0);
  }
  std::printf("\n");
}

}  // namespace host
