#pragma once

#include <lua.hpp>

namespace host {

// Adds to the table at the top of the stack what scripts may ask about files.
void AddFileFunctions(lua_State* lua);

}  // namespace host
