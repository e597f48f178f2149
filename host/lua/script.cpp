#include "host/lua/script.h"

#include <cstdio>
#include <cstdlib>
#include <new>

#include "host/core/fault.h"
#include "host/lua/lua_error.h"
#include "host/lua/lua_globals.h"
#include "host/lua/lua_value.h"

namespace host {
namespace {

// os.exit([code]): ends the program only after everything that scripts hold is released and counted.
int Exit(lua_State* lua) {
  int status = EXIT_SUCCESS;
  if (lua_isboolean(lua, 1)) {
    status = lua_toboolean(lua, 1) != 0 ? EXIT_SUCCESS : EXIT_FAILURE;
  } else {
    status = static_cast<int>(luaL_optinteger(lua, 1, EXIT_SUCCESS));
  }
  lua_close(lua);
  std::exit(FinalStatus(Host::Current(), status));
}

void SetArguments(lua_State* lua, const std::string& name, const std::vector<std::string>& arguments) {
  lua_createtable(lua, static_cast<int>(arguments.size()), 1);
  PushString(lua, name);
  lua_rawseti(lua, -2, 0);
  for (size_t i = 0; i < arguments.size(); ++i) {
    PushString(lua, arguments[i]);
    lua_rawseti(lua, -2, static_cast<lua_Integer>(i) + 1);
  }
  lua_setglobal(lua, "arg");
}

}  // namespace

Script::Script(Host& /*host*/, const std::string& name, std::vector<std::string> arguments)
    : lua_(luaL_newstate()), arguments_(std::move(arguments)) {
  if (lua_ == nullptr) throw std::bad_alloc();
  luaL_openlibs(lua_);
  OpenHostGlobals(lua_);
  OpenHostTable(lua_);
  SetArguments(lua_, name, arguments_);
  lua_getglobal(lua_, "os");
  lua_pushcfunction(lua_, Exit);
  lua_setfield(lua_, -2, "exit");
  lua_pop(lua_, 1);
}

Script::~Script() { lua_close(lua_); }

void Script::FindModulesIn(const std::string& folder) {
  lua_getglobal(lua_, "package");
  PushString(lua_, folder + "/?.so;");
  lua_getfield(lua_, -2, "cpath");
  lua_concat(lua_, 2);
  lua_setfield(lua_, -2, "cpath");
  lua_pop(lua_, 1);
}

void Script::AddLibrary(const std::string& folder) {
  lua_getglobal(lua_, "package");
  lua_getfield(lua_, -1, "path");
  PushString(lua_, ";" + folder + "/?.lua");
  lua_concat(lua_, 2);
  lua_setfield(lua_, -2, "path");
  lua_pop(lua_, 1);
}

bool Script::RunFile(const std::string& path) {
  lua_pushcfunction(lua_, AddTraceback);
  return Run(luaL_loadfile(lua_, path.empty() ? nullptr : path.c_str()));
}

bool Script::RunCode(const std::string& code, const std::string& chunk_name) {
  lua_pushcfunction(lua_, AddTraceback);
  return Run(luaL_loadbuffer(lua_, code.data(), code.size(), chunk_name.c_str()));
}

// On the stack: the message handler, and the loaded chunk or the message why it could not be loaded.
bool Script::Run(int load_status) {
  const int handler = lua_gettop(lua_) - 1;
  int status = load_status;
  if (status == LUA_OK) {
    luaL_checkstack(lua_, static_cast<int>(arguments_.size()), "too many arguments");
    for (const std::string& argument : arguments_) PushString(lua_, argument);
    status = lua_pcall(lua_, static_cast<int>(arguments_.size()), 0, handler);
  }
  if (status != LUA_OK) error_ = luaL_tolstring(lua_, -1, nullptr);
  lua_settop(lua_, handler - 1);
  return status == LUA_OK;
}

int OutputStatus(int status) {
  const bool lost = std::fflush(stdout) != 0 || std::ferror(stdout) != 0;
  if (!lost || status != EXIT_SUCCESS) return status;
  std::fprintf(stderr, "gifhost: standard output cannot be written\n");
  return EXIT_FAILURE;
}

int FinalStatus(const Host& host, int status) {
  const int checked = OutputStatus(status);
  return host.ReportLeaks() ? checked : kExitLeak;
}

}  // namespace host
