#pragma once

#include <lua.hpp>

namespace host {

// What scripts do with objects: members by name in any letter case, methods that can be called or indexed
// (`p:Red(3)`, `p.Red[3]`), `#object` for its Count, and `pairs(object)` over what it counts.
void OpenMembers(lua_State* lua);

}  // namespace host
