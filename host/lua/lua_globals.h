#pragma once

#include <lua.hpp>

namespace host {

// Makes every class and global method of the host a global of that name, in any letter case: calling a class
// makes an instance.
void OpenHostGlobals(lua_State* lua);

}  // namespace host
