#pragma once

// Values between Lua and the host.

#include <lua.hpp>

#include <vector>

#include "host/core/declaration.h"
#include "host/host/value.h"

namespace host {

// The value at a stack index. Lua strings become new host strings. Throws UsageError for dead objects.
Value ToValue(lua_State* lua, int index);
std::vector<Value> ToValues(lua_State* lua, int first, int last);

// Nil for nil, except that a handler's null string is the empty string.
void PushValue(lua_State* lua, const Value& value);
void PushResult(lua_State* lua, const Type& type, const Value& value);

}  // namespace host
