#pragma once

#include <lua.hpp>

#include "host/host/host.h"

namespace host {

// Pushes a host exception as a script catches it: a table with `class`, `message`, `number` and `where` (the
// script's line), which reads well with tostring.
void PushException(lua_State* lua, const RaisedException& raised);

// For lua_pcall: adds the traceback to a message that nobody caught.
int AddTraceback(lua_State* lua);

}  // namespace host
