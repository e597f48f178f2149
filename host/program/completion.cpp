#include "host/program/completion.h"

#include <algorithm>
#include <cctype>
#include <optional>
#include <string_view>

#include "host/core/names.h"
#include "host/lua/lua_object.h"
#include "host/lua/lua_plugin.h"
#include "host/lua/lua_state.h"
#include "host/lua/lua_text.h"

namespace host {
namespace {

// --- A line in parts -----------------------------------------------------------------------------------------------

struct Token {
  enum Kind { kName, kNumber, kString, kOpenString, kMark };
  Kind kind;
  std::string text;

  bool Is(char mark) const { return kind == kMark && text.size() == 1 && text[0] == mark; }
};

bool IsNamePart(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_'; }

// One past the string that begins at a quote; nothing when it is not closed.
std::optional<size_t> EndOfString(std::string_view line, size_t at) {
  for (size_t i = at + 1; i < line.size(); ++i) {
    if (line[i] == '\\') {
      ++i;
    } else if (line[i] == line[at]) {
      return i + 1;
    }
  }
  return std::nullopt;
}

std::vector<Token> Tokens(std::string_view line) {
  std::vector<Token> tokens;
  for (size_t at = 0; at < line.size();) {
    const char first = line[at];
    size_t end = at + 1;
    Token::Kind kind = Token::kMark;
    if (first == ' ' || first == '\t') {
      at = end;
      continue;
    }
    if (first == '"' || first == '\'') {
      const std::optional<size_t> closed = EndOfString(line, at);
      kind = closed ? Token::kString : Token::kOpenString;
      end = closed.value_or(line.size());
    } else if (IsNamePart(first)) {
      while (end < line.size() && IsNamePart(line[end])) ++end;
      kind = std::isdigit(static_cast<unsigned char>(first)) != 0 ? Token::kNumber : Token::kName;
    } else if (first == '.') {
      while (end < line.size() && line[end] == '.') ++end;  // ".." is no member's
    }
    tokens.push_back({kind, std::string(line.substr(at, end - at))});
    at = end;
  }
  return tokens;
}

// --- The chain that a member is asked of ---------------------------------------------------------------------------

struct Step {
  enum Kind { kMember, kCall, kIndex };
  Kind kind;
  std::string text;  // the name, or the one number or string between the brackets
};

// The token that opens what the one at `close` closes; 0 when there is none.
size_t OpenerOf(const std::vector<Token>& tokens, size_t close) {
  int depth = 0;
  for (size_t i = close + 1; i-- > 0;) {
    if (tokens[i].Is(')') || tokens[i].Is(']') || tokens[i].Is('}')) ++depth;
    if (tokens[i].Is('(') || tokens[i].Is('[') || tokens[i].Is('{')) --depth;
    if (depth == 0) return i;
  }
  return 0;
}

// What stands before tokens[end], from the name that it begins with; empty when that is no name.
std::vector<Step> ChainBefore(const std::vector<Token>& tokens, size_t end) {
  std::vector<Step> steps;
  while (end > 0) {
    const Token& last = tokens[end - 1];
    if (last.kind == Token::kName) {
      steps.push_back({Step::kMember, last.text});
      --end;
      if (end == 0 || !(tokens[end - 1].Is('.') || tokens[end - 1].Is(':'))) {
        std::reverse(steps.begin(), steps.end());
        return steps;
      }
      --end;
    } else if (last.kind == Token::kString) {  // f"text"
      steps.push_back({Step::kCall, ""});
      --end;
    } else if (last.Is(')') || last.Is(']')) {
      const size_t opener = OpenerOf(tokens, end - 1);
      const bool holds_one = end - opener == 3;
      steps.push_back({last.Is(')') ? Step::kCall : Step::kIndex, holds_one ? tokens[opener + 1].text : ""});
      end = opener;
    } else {
      break;
    }
  }
  return {};
}

// --- What it gives -------------------------------------------------------------------------------------------------

// A value that stands on the Lua stack, or what the registry tells of one that does not exist yet.
struct Meaning {
  enum Kind { kUnknown, kLua, kMaker, kInstance, kMember, kText };
  Kind kind = kUnknown;
  const Class* object_class = nullptr;  // of kMaker, which makes one, and kInstance
  const MemberGroup* member = nullptr;
};

Meaning OfType(lua_State* lua, const Type& type) {
  if (type.kind == Type::Kind::kString) return {Meaning::kText};
  if (type.kind != Type::Kind::kObject) return {};
  const Class* found = HostOf(lua).FindClass(type.name);
  return found == nullptr ? Meaning() : Meaning{Meaning::kInstance, found};
}

// Takes the value off the stack.
Meaning OfValue(lua_State* lua) {
  Meaning meaning{Meaning::kLua};
  if (IsObject(lua, -1)) {
    const Ref<Object> object = ToObject(lua, -1);
    meaning = {Meaning::kInstance, &object->object_class()};
  } else if (lua_type(lua, -1) == LUA_TSTRING) {
    meaning = {Meaning::kText};
  } else if (!lua_istable(lua, -1)) {
    meaning = {};
  }
  if (meaning.kind != Meaning::kLua) lua_pop(lua, 1);
  return meaning;
}

Meaning OfGlobal(lua_State* lua, const std::string& name) {
  lua_pushglobaltable(lua);
  PushString(lua, name);
  lua_rawget(lua, -2);
  lua_remove(lua, -2);
  const bool is_class = lua_isnil(lua, -1) || (lua_isuserdata(lua, -1) != 0 && !IsObject(lua, -1));
  if (!is_class) return OfValue(lua);
  lua_pop(lua, 1);
  Host& host = HostOf(lua);
  if (const Class* found = host.FindClass(name)) return {Meaning::kMaker, found};
  const MemberGroup* method = host.globals().Find(name);
  return method == nullptr ? Meaning() : Meaning{Meaning::kMember, nullptr, method};
}

// Puts what a table's own or inherited key holds in the table's place, without asking functions.
void RawGet(lua_State* lua, const std::string& key) {
  lua_Integer number = 0;
  const bool is_number = lua_stringtonumber(lua, key.c_str()) != 0;
  if (is_number) {
    number = lua_tointeger(lua, -1);
    lua_pop(lua, 1);
  }
  for (int depth = 0; depth < 8 && lua_istable(lua, -1); ++depth) {
    if (is_number) {
      lua_rawgeti(lua, -1, number);
    } else {
      PushString(lua, key);
      lua_rawget(lua, -2);
    }
    const bool found = !lua_isnil(lua, -1);
    if (!found) lua_pop(lua, 1);
    if (!found && luaL_getmetafield(lua, -1, "__index") == LUA_TNIL) break;
    lua_remove(lua, -2);
    if (found) return;
  }
  lua_pop(lua, 1);
  lua_pushnil(lua);
}

Meaning After(lua_State* lua, const Meaning& before, const Step& step) {
  switch (before.kind) {
    case Meaning::kLua: {
      std::string key = step.text;
      if (step.kind == Step::kIndex && key.size() >= 2 && !IsNamePart(key[0])) key = key.substr(1, key.size() - 2);
      if (step.kind == Step::kCall || key.empty()) {
        lua_pop(lua, 1);
        return {};
      }
      RawGet(lua, key);
      return OfValue(lua);
    }
    case Meaning::kMaker:
      return step.kind == Step::kCall ? Meaning{Meaning::kInstance, before.object_class} : Meaning();
    case Meaning::kMember:
      return step.kind == Step::kMember ? Meaning()
                                        : OfType(lua, before.member->overloads.front()->declaration.result);
    case Meaning::kInstance: {
      const MemberGroup* group = step.kind == Step::kMember ? before.object_class->Find(step.text) : nullptr;
      if (group == nullptr) return {};
      return group->property ? OfType(lua, group->property->type) : Meaning{Meaning::kMember, nullptr, group};
    }
    default:
      return {};
  }
}

// --- Candidates ----------------------------------------------------------------------------------------------------

bool IsName(std::string_view text) {
  return !text.empty() && std::isdigit(static_cast<unsigned char>(text[0])) == 0 &&
         std::all_of(text.begin(), text.end(), IsNamePart);
}

// Of the table on the stack and those that it inherits from; takes it off.
void AddKeys(lua_State* lua, std::vector<std::string>& candidates) {
  for (int depth = 0; depth < 8 && lua_istable(lua, -1); ++depth) {
    for (lua_pushnil(lua); lua_next(lua, -2) != 0; lua_pop(lua, 1)) {
      if (lua_type(lua, -2) != LUA_TSTRING || !IsName(lua_tostring(lua, -2))) continue;
      candidates.push_back(std::string(lua_tostring(lua, -2)) + (lua_isfunction(lua, -1) ? "(" : ""));
    }
    if (luaL_getmetafield(lua, -1, "__index") == LUA_TNIL) break;
    lua_remove(lua, -2);
  }
  lua_pop(lua, 1);
}

void AddMembers(const Class& object_class, std::vector<std::string>& candidates) {
  for (const std::string& name : object_class.MemberNames()) {
    if (SameName(name, "Constructor")) continue;  // it is the class that is called
    const MemberGroup* group = object_class.Find(name);
    const bool takes_nothing =
        !group->property && group->overloads.size() == 1 && group->overloads.front()->declaration.parameters.empty();
    candidates.push_back(name + (group->property ? "" : takes_nothing ? "()" : "("));
  }
}

void AddGlobals(lua_State* lua, std::vector<std::string>& candidates) {
  lua_pushglobaltable(lua);
  for (lua_pushnil(lua); lua_next(lua, -2) != 0; lua_pop(lua, 1)) {
    const bool known_below = lua_isuserdata(lua, -1) != 0 && !IsObject(lua, -1);  // a class
    if (lua_type(lua, -2) != LUA_TSTRING || !IsName(lua_tostring(lua, -2)) || known_below) continue;
    candidates.push_back(std::string(lua_tostring(lua, -2)) + (lua_isfunction(lua, -1) ? "(" : ""));
  }
  lua_pop(lua, 1);
  for (const auto& [key, known] : HostOf(lua).classes()) candidates.push_back(known->name);
  for (const auto& [key, group] : HostOf(lua).globals().all()) candidates.push_back(group.name + "(");
}

}  // namespace

bool Complete(lua_State* lua, const std::string& line, std::vector<std::string>& candidates) {
  const std::vector<Token> tokens = Tokens(line);
  if (!tokens.empty() && tokens.back().kind == Token::kOpenString) return false;
  LoadPlugin(lua);
  const int top = lua_gettop(lua);
  const bool in_name = !tokens.empty() && tokens.back().kind == Token::kName && IsNamePart(line.back());
  const size_t end = tokens.size() - (in_name ? 1 : 0);
  if (end == 0 || !(tokens[end - 1].Is('.') || tokens[end - 1].Is(':'))) {
    AddGlobals(lua, candidates);
    return true;
  }
  const std::vector<Step> steps = ChainBefore(tokens, end - 1);
  if (steps.empty()) return true;
  Meaning meaning = OfGlobal(lua, steps.front().text);
  for (size_t i = 1; i < steps.size(); ++i) meaning = After(lua, meaning, steps[i]);
  if (meaning.kind == Meaning::kText) {
    lua_getglobal(lua, "string");
    AddKeys(lua, candidates);
  } else if (meaning.kind == Meaning::kLua) {
    AddKeys(lua, candidates);
  } else if (meaning.kind == Meaning::kInstance) {
    AddMembers(*meaning.object_class, candidates);
  }
  lua_settop(lua, top);
  std::sort(candidates.begin(), candidates.end());
  candidates.erase(std::unique(candidates.begin(), candidates.end()), candidates.end());
  return true;
}

}  // namespace host
