#pragma once

#include <lua.hpp>

#include <string>
#include <vector>

#include "host/lua/lua_state.h"

namespace host {

// A Lua state whose scripts use the host. Every reference that scripts hold is released when it is destroyed.
class Script {
 public:
  // `arguments` are handed to the scripts as `...` and as the table `arg`, whose element 0 is `name`.
  Script(Host& host, const std::string& name, std::vector<std::string> arguments, bool allow_c_modules = false);
  ~Script();
  Script(const Script&) = delete;
  Script& operator=(const Script&) = delete;

  // Lets `require` find shared objects in a folder, before those elsewhere.
  void FindModulesIn(const std::string& folder);

  // Lets scripts require what lies in that folder, after whatever else they find.
  void AddLibrary(const std::string& folder);

  // Each runs a script to its end; false, with the message in error(), when it fails.
  bool RunFile(const std::string& path);  // empty: standard input
  bool RunCode(const std::string& code, const std::string& chunk_name);

  const std::string& error() const { return error_; }
  lua_State* lua() { return lua_; }

 private:
  bool Run(int load_status);

  ScriptContext context_;
  lua_State* lua_;
  std::vector<std::string> arguments_;
  std::string error_;
};

}  // namespace host
