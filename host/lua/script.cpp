#include "host/lua/script.h"

#include <cstdlib>
#include <new>

#include "host/core/exit_status.h"
#include "host/host/final_status.h"
#include "host/lua/lua_error.h"
#include "host/lua/lua_globals.h"
#include "host/lua/lua_host_table.h"
#include "host/lua/lua_libraries.h"
#include "host/lua/lua_members.h"
#include "host/lua/lua_method.h"
#include "host/lua/lua_object.h"
#include "host/lua/lua_text.h"

namespace host {
namespace {

// os.exit([code]): ends the program only after everything that scripts hold is released and counted.
int Exit(lua_State* lua) {
  int status = kExitSuccess;
  if (lua_isboolean(lua, 1)) {
    status = lua_toboolean(lua, 1) != 0 ? kExitSuccess : kExitFailed;
  } else {
    status = static_cast<int>(luaL_optinteger(lua, 1, kExitSuccess));
  }
  ScriptContext& context = ContextOf(lua);
  if (context.ending) throw UsageError("the program is ending already");
  context.ending = true;
  lua_close(lua);
  // Called while a value is collected in the middle of something, what that holds is not given back.
  const bool all_returned = context.running_calls == 1;
  std::exit(all_returned ? FinalStatus(context.host, status) : OutputStatus(status));
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

Script::Script(Host& host, const std::string& name, std::vector<std::string> arguments, bool allow_c_modules)
    : context_{.host = host}, lua_(luaL_newstate()), arguments_(std::move(arguments)) {
  if (lua_ == nullptr) throw std::bad_alloc();
  SetContext(lua_, &context_);
  OpenLibraries(lua_, allow_c_modules);
  OpenErrors(lua_);
  OpenObjects(lua_);
  OpenMethods(lua_);
  OpenMembers(lua_);
  OpenHostGlobals(lua_);
  OpenHostTable(lua_);
  SetArguments(lua_, name, arguments_);
  lua_getglobal(lua_, "os");
  lua_pushcfunction(lua_, Guarded<Exit>);
  lua_setfield(lua_, -2, "exit");
  lua_pop(lua_, 1);
}

Script::~Script() {
  context_.ending = true;
  lua_close(lua_);
}

void Script::FindModulesIn(const std::string& folder) { AddModuleFolder(lua_, folder); }

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
  return Run(luaL_loadfilex(lua_, path.empty() ? nullptr : path.c_str(), "t"));
}

bool Script::RunCode(const std::string& code, const std::string& chunk_name) {
  lua_pushcfunction(lua_, AddTraceback);
  return Run(luaL_loadbufferx(lua_, code.data(), code.size(), chunk_name.c_str(), "t"));
}

// On the stack: the message handler, and the loaded chunk or the message why it could not be loaded.
bool Script::Run(int load_status) {
  const int handler = lua_gettop(lua_) - 1;
  int status = load_status;
  if (status == LUA_OK && lua_checkstack(lua_, static_cast<int>(arguments_.size())) == 0) {
    status = LUA_ERRRUN;
    lua_pushliteral(lua_, "too many arguments");
  }
  if (status == LUA_OK) {
    for (const std::string& argument : arguments_) PushString(lua_, argument);
    status = lua_pcall(lua_, static_cast<int>(arguments_.size()), 0, handler);
  }
  if (status != LUA_OK) error_ = ErrorText(lua_, -1);
  lua_settop(lua_, handler - 1);
  return status == LUA_OK;
}

}  // namespace host
