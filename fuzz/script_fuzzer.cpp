// Lua programs over all that is registered and all that Lua offers, each in a state of its own: whatever they do,
// they end with an error or without, and the host stays whole.
//
// Input: two bytes that say how much memory Lua may take and how often it collects, then the choices of the writer.
// With PRINT_SCRIPTS set the programs are shown.

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

#include "fuzz/input.h"
#include "fuzz/script_writer.h"
#include "host/classes/full_host.h"
#include "host/functions/host_functions.h"
#include "host/lua/script.h"

namespace {

using host::FullHost;
using host::Host;

constexpr int kInstructions = 100000;  // of a program; then every further one fails

Host& TheHost() {
  static FullHost host([] {
    host::HostOptions options;
    options.largest_block = 1000000;
    if (std::getenv("DESKTOP_PICTURES")) options.pictures = host::PictureKind::kDesktop;
    return options;
  }());
  return host;
}

void AddMembers(const host::MemberTable& table, std::vector<std::string>& names) {
  for (const auto& [key, group] : table.all()) names.push_back(group.name);
}

ScriptNames NamesOf(const Host& host) {
  ScriptNames names;
  for (const auto& [key, known] : host.classes()) {
    names.classes.push_back(known->name);
    AddMembers(known->members, names.members);
  }
  AddMembers(host.globals(), names.globals);
  for (const auto& group : {host::ObjectFunctions(), host::StringFunctions(), host::MemoryBlockFunctions(),
                            host::FileFunctions(), host::PictureFunctions()}) {
    for (const host::HostFunction& function : group) names.functions.emplace_back(function.name);
  }
  return names;
}

// Lua's memory: an allocation beyond the limit fails.
struct Budget {
  size_t used = 0;
  size_t limit = 0;
};

void* Allocate(void* budget_pointer, void* memory, size_t old_size, size_t size) {
  auto& budget = *static_cast<Budget*>(budget_pointer);
  if (memory == nullptr) old_size = 0;
  if (size > old_size && budget.used + size - old_size > budget.limit) return nullptr;
  if (size == 0) {
    std::free(memory);
    budget.used -= old_size;
    return nullptr;
  }
  void* moved = std::realloc(memory, size);
  if (moved != nullptr) budget.used += size - old_size;
  return moved;
}

void StopAtOnce(lua_State* lua, lua_Debug* /*at*/) {
  lua_sethook(lua, StopAtOnce, LUA_MASKCOUNT, 1);
  luaL_error(lua, "enough");
}

// Not the way out, not what waits for input, not other people's files. Handlers that fail twice, each of which calls
// them again, take for ever, and no hook is called in those that a hook called.
constexpr const char* kTamed = R"(
os.exit, os.execute, os.remove, os.rename, os.tmpname, os.getenv = nil
io = nil
host.opened_bytes = nil
print = function(...) for _, value in ipairs { ... } do tostring(value) end end
warn = print
local rep = string.rep
string.rep = function(text, n) return rep(text, math.min(n, 10000)) end
-- Finalizers are not stopped by counting instructions.
local function bounded(iterate)
  return function(...)
    local next, state, at, closed = iterate(...)
    local left = 1000
    return function(...)
      left = left - 1
      if left >= 0 then return next(...) end
    end, state, at, closed
  end
end
ipairs, pairs = bounded(ipairs), bounded(pairs)
local xpcall_as_it_is = xpcall
local calls = 0
xpcall = function(f, handler, ...)
  return xpcall_as_it_is(f, function(...)
    calls = calls + 1
    return calls > 8 and "enough" or handler(...)
  end, ...)
end
)";

void RunOne(Input input) {
  static const ScriptNames names = NamesOf(TheHost());
  static const std::string document = [] {
    std::ifstream file(GIF_SAMPLE_FILE, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
  }();
  const int memory = input.Byte();
  const int collecting = input.Byte();
  const std::string program = WriteScript(input, names);
  if (std::getenv("PRINT_SCRIPTS")) std::cout << program << std::flush;

  for (const std::string& name : names.functions) TheHost().call_count(name).failing_call = 0;
  Budget budget;
  host::Script script(TheHost(), "fuzzed", {});
  lua_State* lua = script.lua();
  script.RunCode(kTamed, "=tamed");
  lua_pushlstring(lua, document.data(), document.size());
  lua_setglobal(lua, "opened_bytes");
  budget.used = static_cast<size_t>(lua_gc(lua, LUA_GCCOUNT)) * 1024 + static_cast<size_t>(lua_gc(lua, LUA_GCCOUNTB));
  budget.limit = budget.used + (memory < 128 ? size_t{4} << 20 : static_cast<size_t>(memory - 127) * 512);
  lua_setallocf(lua, Allocate, &budget);
  if (collecting % 4 == 0) lua_gc(lua, LUA_GCINC, 1, 1000, 1);  // all the time
  if (collecting % 4 == 1) lua_gc(lua, LUA_GCGEN, 1, 1);
  lua_sethook(lua, StopAtOnce, LUA_MASKCOUNT, kInstructions);
  script.RunCode(program, "=fuzzed");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  [[maybe_unused]] static const bool loaded = [] {
    TheHost().LoadPlugin(GIF_PLUGIN_FILE);
    std::string folder = std::filesystem::temp_directory_path() / "script_fuzzer_XXXXXX";
    if (mkdtemp(folder.data()) == nullptr) std::abort();
    std::filesystem::current_path(folder);
    static const struct Cleaner {
      std::string path;
      ~Cleaner() { std::filesystem::remove_all(path); }
    } cleaner{folder};
    return true;
  }();
  RunOne(Input(data, size));
  return 0;
}
