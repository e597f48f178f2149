// The command "annotations": every class and global method as a Lua file that only editors read. Its comments are
// those of lua-language-server.

#include <cstdio>
#include <stdexcept>

#include "host/classes/full_host.h"
#include "host/core/exit_status.h"
#include "host/core/text.h"
#include "host/host/memory_block.h"
#include "host/program/commands.h"
#include "host/program/listing.h"
#include "host/program/plugin_file.h"

namespace host {
namespace {

// A type in an annotation. Objects may be nil. Classes are spelt as they are registered: letter case matters to
// editors.
std::string LuaType(Host& host, const Type& type) {
  switch (type.kind) {
    case Type::Kind::kNothing:
      return "nil";
    case Type::Kind::kInteger:
    case Type::Kind::kColor:
    case Type::Kind::kPointer:
      return "integer";
    case Type::Kind::kBoolean:
      return "boolean";
    case Type::Kind::kString:
      return "string";
    case Type::Kind::kObject:
      break;
  }
  return host.RequireClass(type.name).name + "?";
}

// Lua's words can't be names of parameters.
std::string ParameterName(const Parameter& parameter) {
  static const std::vector<std::string> words = {
      "and", "break", "do",  "else", "elseif", "end",    "false",  "for",  "function", "goto",  "if",
      "in",  "local", "nil", "not",  "or",     "repeat", "return", "then", "true",     "until", "while"};
  for (const std::string& word : words) {
    if (word == parameter.name) return parameter.name + "_";
  }
  return parameter.name;
}

// "fun(self: GIFZKV, index: integer): GifBlockZKV?"
std::string FunctionType(Host& host, const Method& method, const std::string& self) {
  std::string parameters = self.empty() ? "" : "self: " + self;
  for (const Parameter& parameter : method.declaration.parameters) {
    parameters += Text(parameters.empty() ? "" : ", ", ParameterName(parameter),
                       parameter.default_value ? "?: " : ": ", LuaType(host, parameter.type));
  }
  const bool gives = method.declaration.result.kind != Type::Kind::kNothing;
  return Text("fun(", parameters, ")", gives ? ": " + LuaType(host, method.declaration.result) : "");
}

void PrintFunction(Host& host, const MemberGroup& group, const std::string& self) {
  const Method& first = *group.overloads.front();
  for (size_t i = 1; i < group.overloads.size(); ++i) {
    std::printf("---@overload %s\n", FunctionType(host, *group.overloads[i], self).c_str());
  }
  std::string names;
  for (const Parameter& parameter : first.declaration.parameters) {
    const std::string name = ParameterName(parameter);
    std::printf("---@param %s%s %s\n", name.c_str(), parameter.default_value ? "?" : "",
                LuaType(host, parameter.type).c_str());
    names += (names.empty() ? "" : ", ") + name;
  }
  const Type& result = first.declaration.result;
  if (result.kind != Type::Kind::kNothing) std::printf("---@return %s\n", LuaType(host, result).c_str());
  std::printf("function %s%s%s(%s) end\n\n", self.c_str(), self.empty() ? "" : ":", group.name.c_str(),
              names.c_str());
}

// A method that is assignable is indexed: `palette.Red[3] = 255`.
bool IsIndexed(const MemberGroup& group) {
  return !group.overloads.empty() && group.overloads.front()->setter != nullptr &&
         group.overloads.front()->declaration.parameters.size() == 1;
}

void PrintField(Host& host, const MemberGroup& group, const std::string& class_name) {
  if (group.property) {
    std::printf("---@field %s %s%s\n", group.name.c_str(), LuaType(host, group.property->type).c_str(),
                group.property->setter == nullptr ? " read-only" : "");
  } else if (IsIndexed(group)) {
    const Method& method = *group.overloads.front();
    std::printf("---@field %s { [integer]: %s } | %s\n", group.name.c_str(),
                LuaType(host, method.declaration.result).c_str(), FunctionType(host, method, class_name).c_str());
  }
}

// Whether Lua shows instances as bytes: `block[3]`, `#block`.
bool IsBytes(const Class& known) { return SameName(known.name, MemoryBlock::kKind); }

// How instances are made: by calling the class.
void PrintConstructors(Host& host, const Class& known) {
  if (known.maker == nullptr) return;
  const MemberGroup* constructor = known.Find("Constructor");
  if (constructor == nullptr) {
    std::printf("---@overload fun(): %s\n", known.name.c_str());
    return;
  }
  for (const auto& method : constructor->overloads) {
    std::printf("---@overload %s: %s\n", FunctionType(host, *method, "").c_str(), known.name.c_str());
  }
}

void PrintClass(Host& host, const Class& known) {
  const std::string base = known.superclass == nullptr ? "" : ": " + known.superclass->name;
  std::printf("---@class %s%s\n", known.name.c_str(), base.c_str());
  for (const auto& [name, group] : known.members.all()) PrintField(host, group, known.name);
  if (IsBytes(known)) std::printf("---@field [integer] integer\n");
  PrintConstructors(host, known);
  if (known.Find("Count") != nullptr || IsBytes(known)) std::printf("---@operator len: integer\n");
  std::printf("%s = {}\n\n", known.name.c_str());
  for (const auto& [name, group] : known.members.all()) {
    if (group.property || IsIndexed(group) || SameName(name, "Constructor")) continue;
    PrintFunction(host, group, known.name);
  }
}

// The table that host/lua/lua_host_table.cpp makes.
constexpr char kHostTable[] = R"(host = {
  version = 0, ---@type number?
  plugin_version = 0,
  pictures = "console",
}

---@param path string
---@return boolean
function host.exists(path) end

---@param plugin? "designed"|"tolerant"|string
---@return string?
function host.use(plugin) end

---@class FileFacts
---@field kind "file" | "folder" | "device" | "pipe" | "socket"
---@field size integer bytes
---@field device integer
---@field inode integer
---@field modified integer seconds since 1970

---@param path string
---@return FileFacts?
---@return string? why there is none
function host.stat(path) end

---@param seconds integer
function host.alarm(seconds) end

---@param bytes string a byte for each pixel
---@param width integer
---@param quarters integer clockwise
---@param mirrored? boolean left and right exchanged before
---@return string
function host.turned(bytes, width, quarters, mirrored) end

---@param bytes string
---@return { [integer]: integer } how often each value from 0 to 255 stands there
function host.counts(bytes) end

---@param bytes string
---@return integer
function host.crc32(bytes) end

---@param value any
---@return string?
function host.class(value) end

---@return string[]
function host.classes() end

---@param class? string
---@return table
function host.describe(class) end

---@return table[]
function host.modules() end

---@return { [string]: integer }
function host.live() end

---@param name string
---@return integer called
---@return integer resolved
function host.calls(name) end

---@param name string
---@param n? integer
function host.fail(name, n) end
)";

}  // namespace

int RunAnnotations(const ProgramOptions& options) {
  if (!options.arguments.empty()) throw std::invalid_argument("annotations takes no arguments");
  FullHost host(options.host);
  host.LoadPlugin(PluginFile(options.plugin));
  std::printf("---@meta\n\n");
  for (const auto& [name, known] : host.classes()) PrintClass(host, *known);
  for (const auto& [name, group] : host.globals().all()) PrintFunction(host, group, "");
  std::fputs(kHostTable, stdout);
  return kExitSuccess;
}

}  // namespace host
