#pragma once

#include <lua.hpp>

namespace host {

// Makes every class and global method of the host a global of that name, in any letter case: calling a class
// makes an instance.
void OpenHostGlobals(lua_State* lua);

// The table `host`: what is registered, what is alive, what was called.
void OpenHostTable(lua_State* lua);

// Adds to the table at the top of the stack what scripts may ask about files.
void AddFileFunctions(lua_State* lua);

// ... and what they may have done to bytes: turned, or summed up.
void AddPixelFunctions(lua_State* lua);

}  // namespace host
