#pragma once

#include <lua.hpp>

#include <string_view>

namespace host {

inline void PushString(lua_State* lua, std::string_view text) { lua_pushlstring(lua, text.data(), text.size()); }

}  // namespace host
