#pragma once

#include <lua.hpp>

namespace host {

// Adds to the table at the top of the stack what scripts may have done to bytes: turned, counted, summed up.
void AddPixelFunctions(lua_State* lua);

}  // namespace host
