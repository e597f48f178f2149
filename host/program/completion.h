#pragma once

#include <lua.hpp>

#include <string>
#include <vector>

namespace host {

// What a line of Lua may go on with behind its last "." or ":", or as a name of its own: members by what the chain
// before them is declared to give, keys of tables, globals. Functions and methods come with "(". Runs nothing of the
// script's. Gives false where the line ends within a string.
bool Complete(lua_State* lua, const std::string& line, std::vector<std::string>& candidates);

}  // namespace host
