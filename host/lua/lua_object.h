#pragma once

// Host objects as Lua values: userdata that hold one reference each.

#include <lua.hpp>

#include "host/host/object.h"

namespace host {

// Makes the objects' metatable; what scripts do with objects is put into it by lua_members.h.
void OpenObjects(lua_State* lua);
void PushObjectMetatable(lua_State* lua);

// Pushes the object. While Lua knows an object it is always the same userdata, so `==` and table keys work.
void PushObject(lua_State* lua, const Ref<Object>& object);

bool IsObject(lua_State* lua, int index);

// The object at a stack index; null when there is none. Throws UsageError for one that Lua has given up already: it
// comes back to a script through another value's `__gc`.
Ref<Object> ToObject(lua_State* lua, int index);

// The same where an object has to be. Throws UsageError for everything else.
Ref<Object> RequireObject(lua_State* lua, int index);

}  // namespace host
