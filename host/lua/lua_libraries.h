#pragma once

#include <lua.hpp>

#include <string>

namespace host {

// Lua's own libraries, without what could crash the program: bytecode is not loaded, `debug` only looks (traceback,
// getinfo, gethook), and libraries of C code can be loaded only where that is allowed. Paths with zero bytes are
// errors.
void OpenLibraries(lua_State* lua, bool allow_c_modules);

// Lets `require` find the shared objects in a folder, in any case.
void AddModuleFolder(lua_State* lua, const std::string& folder);

}  // namespace host
