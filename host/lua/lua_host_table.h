#pragma once

#include <lua.hpp>

namespace host {

// The table `host`: what is registered, what is alive, what was called.
void OpenHostTable(lua_State* lua);

}  // namespace host
