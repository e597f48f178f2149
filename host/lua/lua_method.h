#pragma once

#include <lua.hpp>

#include "host/host/class.h"

namespace host {

// Makes the methods' metatable.
void OpenMethods(lua_State* lua);

// Pushes a method of the object at `object_index` as a value of its own: `m(...)`, `m[i]` and `m[i] = v` call
// it. Both `object:Method(...)` and `object.Method(...)` work.
void PushBoundMethod(lua_State* lua, const MemberGroup& group, int object_index);

// Pushes a global method as a value to call.
void PushGlobalMethod(lua_State* lua, const MemberGroup& group);

}  // namespace host
