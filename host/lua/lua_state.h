#pragma once

#include <lua.hpp>

#include <cstdint>
#include <optional>

#include "host/host/host.h"

namespace host {

// What every function that scripts call can reach by its lua_State. It lives as long as the state does.
struct ScriptContext {
  Host& host;
  int running_calls = 0;                   // of C functions
  bool ending = false;                     // the state is being closed
  std::optional<int64_t> last_color = {};  // that a handler gave
  const void* object_metatable = nullptr;  // what tells objects from other userdata
};

inline void SetContext(lua_State* lua, ScriptContext* context) {
  *static_cast<ScriptContext**>(lua_getextraspace(lua)) = context;
}
// Coroutines get a copy of the pointer when they are made.
inline ScriptContext& ContextOf(lua_State* lua) { return **static_cast<ScriptContext**>(lua_getextraspace(lua)); }
inline Host& HostOf(lua_State* lua) { return ContextOf(lua).host; }

}  // namespace host
