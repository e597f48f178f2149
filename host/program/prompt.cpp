#include "host/program/prompt.h"

#if defined(GIFHOST_LINE_EDITOR_READLINE)
#include <readline/history.h>
#include <readline/readline.h>
#elif defined(GIFHOST_LINE_EDITOR_LIBEDIT)
#include <editline/readline.h>
#endif

#include <cstdio>
#include <cstring>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/core/heap.h"
#include "host/core/messages.h"
#include "host/core/text.h"
#include "host/host/dispatch.h"
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

void StartCompleting(lua_State* /*lua*/) {}

#else

std::optional<std::string> ReadLine(const char* prompt) {
  const std::unique_ptr<char, FreeMemory> line(readline(prompt));
  if (!line) return std::nullopt;
  if (*line != '\0') add_history(line.get());
  return std::string(line.get());
}

// --- TAB -----------------------------------------------------------------------------------------------------------

constexpr char kWordBreaks[] = " \t\n\"'=<>(){}[]+-*/%,;#~^|&";
lua_State* completed_state = nullptr;  // readline hands nothing on
std::vector<std::string> candidates;
size_t next_candidate = 0;

void AddKeys(lua_State* lua, const std::string& before) {
  for (lua_pushnil(lua); lua_next(lua, -2) != 0; lua_pop(lua, 1)) {
    if (lua_type(lua, -2) == LUA_TSTRING) candidates.push_back(before + lua_tostring(lua, -2));
  }
}

// What "name." or "name:" may go on with: the members of an object, the keys of a table. Leaves the stack as it is,
// and runs no code of the script's.
void AddMembersOf(lua_State* lua, const std::string& name, const std::string& before) {
  lua_pushglobaltable(lua);
  lua_pushlstring(lua, name.data(), name.size());
  lua_rawget(lua, -2);
  if (IsObject(lua, -1)) {
    const Ref<Object> object = ToObject(lua, -1);
    for (const std::string& member : object->object_class().MemberNames()) candidates.push_back(before + member);
  } else if (lua_istable(lua, -1)) {
    AddKeys(lua, before);
  }
  lua_pop(lua, 2);
}

char* NextMatch(const char* text, int state) {
  if (state == 0) next_candidate = 0;
  while (next_candidate < candidates.size()) {
    const std::string& candidate = candidates[next_candidate++];
    const std::string_view begin = std::string_view(candidate).substr(0, std::strlen(text));
    if (SameName(begin, text)) return strdup(candidate.c_str());
  }
  return nullptr;
}

char** Complete(const char* text, int start, int /*end*/) {
  candidates.clear();
  lua_State* lua = completed_state;
  const bool in_string = start > 0 && (rl_line_buffer[start - 1] == '"' || rl_line_buffer[start - 1] == '\'');
  if (in_string) return nullptr;  // readline completes file names
  rl_attempted_completion_over = 1;
  rl_completion_append_character = '\0';
  const std::string word(text);
  const size_t dot = word.find_first_of(".:");
  if (dot != std::string::npos) {
    AddMembersOf(lua, word.substr(0, dot), word.substr(0, dot + 1));
  } else {
    lua_pushglobaltable(lua);
    AddKeys(lua, "");
    lua_pop(lua, 1);
    for (const auto& [key, known] : HostOf(lua).classes()) candidates.push_back(known->name);
    for (const auto& [key, group] : HostOf(lua).globals().all()) candidates.push_back(group.name);
  }
  return rl_completion_matches(text, NextMatch);
}

void StartCompleting(lua_State* lua) {
  completed_state = lua;
  rl_attempted_completion_function = Complete;
  rl_basic_word_break_characters = const_cast<char*>(kWordBreaks);
}

#endif

// --- Lines ---------------------------------------------------------------------------------------------------------

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

// "GIFZKV#3: Count 34, Header "GIF89a"": what an object says in numbers and texts.
std::string Facts(Host& host, const Ref<Object>& object) {
  std::string facts;
  for (const auto& [key, group] : object->object_class().members.all()) {
    if (!group.property || group.property->getter == nullptr || group.property->type.kind == Type::Kind::kObject)
      continue;
    try {
      const Value value = GetProperty(host, object, *group.property);
      const Ref<String> text = ValueAs<String>(value);
      facts += Text(facts.empty() ? ": " : ", ", group.name, " ", text ? Quote(text->bytes()) : Show(value));
    } catch (const RaisedException&) {
      // It has none.
    }
  }
  return object->Describe() + facts;
}

std::string Describe(lua_State* lua, int index) {
  if (const Ref<Object> object = ToObject(lua, index)) return Facts(HostOf(lua), object);
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
  StartCompleting(lua);
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
    if (!succeeded) std::fprintf(stderr, "%s\n", Shown(ErrorText(lua, -1), "\n\t").c_str());
  }
  std::printf("\n");
  lua_settop(lua, 0);
}

}  // namespace host
