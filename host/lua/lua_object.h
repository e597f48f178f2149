#pragma once

// Objects in Lua: members by name in any letter case, methods that can be called or indexed (`p:Red(3)`, `p.Red[3]`),
// `#object` for its Count, and `pairs(object)` over what it counts.

#include <lua.hpp>

#include "host/host/host.h"

namespace host {

// Pushes the object. While Lua knows an object it is always the same userdata, so `==` and table keys work.
void PushObject(lua_State* lua, const Ref<Object>& object);

// The object at a stack index, or null. Owned by Lua.
const Ref<Object>* TestObject(lua_State* lua, int index);

}  // namespace host
