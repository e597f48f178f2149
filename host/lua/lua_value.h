#pragma once

// Values between Lua and the host. Lua is the build that throws C++ exceptions, so that what a C function
// holds is given back on every way out.

#include <lua.hpp>

#include <vector>

#include "host/host/host.h"

namespace host {

// The value at a stack index. Lua strings become new host strings.
Value ToValue(lua_State* lua, int index);
std::vector<Value> ToValues(lua_State* lua, int first, int last);

// Nil for nil, except that a handler's null string is the empty string.
void PushValue(lua_State* lua, const Value& value);
void PushResult(lua_State* lua, const Type& type, const Value& value);
void PushString(lua_State* lua, std::string_view text);

// Runs a C function's body and turns what it throws into Lua errors.
int PushedError(lua_State* lua, const std::exception& error);  // pushes the error value, for lua_error
template <int (*body)(lua_State*)>
int Guarded(lua_State* lua) {
  try {
    return body(lua);
  } catch (const std::exception& error) {
    PushedError(lua, error);
  }
  return lua_error(lua);
}

}  // namespace host
