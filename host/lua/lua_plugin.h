#pragma once

#include <lua.hpp>

#include "host/lua/plugin_choice.h"

namespace host {

// Gives scripts a plugin to choose and, with their first use of anything that it may have registered, to load. It is
// borrowed for the life of the state.
void SetPlugin(lua_State* lua, PluginChoice* plugin);

// Loads the plugin that was chosen, if the host has none yet.
void LoadPlugin(lua_State* lua);

// To the table on the stack, which is `host`: what chooses, and that its functions which ask for what is registered
// have the plugin loaded first.
void AddPluginFunctions(lua_State* lua);

}  // namespace host
