#include "host/lua/lua_plugin.h"

#include <string_view>

#include "host/lua/lua_error.h"
#include "host/lua/lua_state.h"
#include "host/lua/lua_text.h"

namespace host {
namespace {

constexpr char kPlugin = 0;  // its address is the registry's key

// What waits until there is a plugin.
constexpr const char* kLater[] = {"classes", "describe", "modules", "live", "calls", "fail"};

// Null for scripts of a host that has its plugin already.
PluginChoice* PluginOf(lua_State* lua) {
  lua_rawgetp(lua, LUA_REGISTRYINDEX, &kPlugin);
  auto* plugin = static_cast<PluginChoice*>(lua_touserdata(lua, -1));
  lua_pop(lua, 1);
  return plugin;
}

// host.use(["designed", "tolerant" or a library's path]): which plugin is wanted, before anything of it is used.
// Gives the one that is; nil while any may be.
int Use(lua_State* lua) {
  PluginChoice* plugin = PluginOf(lua);
  if (plugin == nullptr) throw UsageError("the plugin is loaded already");
  if (!lua_isnoneornil(lua, 1)) plugin->Choose(luaL_checkstring(lua, 1));
  if (plugin->chosen().empty()) return 0;
  PushString(lua, plugin->chosen());
  return 1;
}

// Asked for a field that is not there; those that wait are in the table that is the upvalue.
int FindField(lua_State* lua) {
  if (lua_type(lua, 2) != LUA_TSTRING) return 0;
  const bool is_version = std::string_view(lua_tostring(lua, 2)) == "plugin_version";
  lua_pushvalue(lua, 2);
  if (lua_rawget(lua, lua_upvalueindex(1)) == LUA_TNIL && !is_version) return 0;
  LoadPlugin(lua);
  if (is_version) lua_pushinteger(lua, HostOf(lua).plugin_version());
  lua_pushvalue(lua, 2);
  lua_pushvalue(lua, -2);
  lua_rawset(lua, 1);  // found at once the next time
  return 1;
}

}  // namespace

void SetPlugin(lua_State* lua, PluginChoice* plugin) {
  lua_pushlightuserdata(lua, plugin);
  lua_rawsetp(lua, LUA_REGISTRYINDEX, &kPlugin);
}

void LoadPlugin(lua_State* lua) {
  if (PluginChoice* plugin = PluginOf(lua)) plugin->Load();
}

void AddPluginFunctions(lua_State* lua) {
  lua_pushcfunction(lua, Guarded<Use>);
  lua_setfield(lua, -2, "use");
  lua_createtable(lua, 0, 1);
  lua_newtable(lua);
  for (const char* name : kLater) {
    lua_getfield(lua, -3, name);
    lua_setfield(lua, -2, name);
    lua_pushnil(lua);
    lua_setfield(lua, -4, name);
  }
  lua_pushcclosure(lua, Guarded<FindField>, 1);
  lua_setfield(lua, -2, "__index");
  lua_setmetatable(lua, -2);
}

}  // namespace host
