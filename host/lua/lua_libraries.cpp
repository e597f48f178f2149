#include "host/lua/lua_libraries.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <string_view>

#include "host/host/path.h"
#include "host/lua/lua_error.h"
#include "host/lua/lua_text.h"

namespace host {
namespace {

constexpr const char* kLoadLibrary = "host.loadlib";

template <int paths>
int RequirePaths(lua_State* lua) {
  for (int i = 1; i <= paths; ++i) {
    size_t length = 0;
    const char* path = lua_type(lua, i) == LUA_TSTRING ? lua_tolstring(lua, i, &length) : "";
    RequirePath({path, length});
  }
  return 0;
}

// Raises an error unless the first arguments, as far as they are strings, can be paths.
template <int paths>
void CheckPaths(lua_State* lua) {
  Guarded<RequirePaths<paths>>(lua);
}

// Goes on as the library's own function, the first upvalue: its errors bear its name, and the script's line.
int Original(lua_State* lua) { return lua_tocfunction(lua, lua_upvalueindex(1))(lua); }

// The library's own function, whose first arguments are paths.
template <int paths>
int UsePaths(lua_State* lua) {
  CheckPaths<paths>(lua);
  return Original(lua);
}

// The library's own function, with "t" as the argument that says which chunks are taken.
template <int mode_index>
int LoadText(lua_State* lua) {
  if (std::string_view(luaL_optstring(lua, mode_index, "t")).find('t') == std::string_view::npos) {
    return luaL_error(lua, "only text can be loaded, no binary chunks");
  }
  if (lua_gettop(lua) < mode_index) lua_settop(lua, mode_index);
  lua_pushliteral(lua, "t");
  lua_replace(lua, mode_index);
  return Original(lua);
}

int LoadTextFile(lua_State* lua) {
  CheckPaths<1>(lua);
  return LoadText<2>(lua);
}

// Raises the message on the stack, with the script's line in front.
int FailWhere(lua_State* lua) {
  PushWhere(lua);
  lua_insert(lua, -2);
  lua_concat(lua, 2);
  return lua_error(lua);
}

int AllResults(lua_State* lua, int /*status*/, lua_KContext /*context*/) { return lua_gettop(lua) - 1; }

int DoFile(lua_State* lua) {
  CheckPaths<1>(lua);
  const char* path = luaL_optstring(lua, 1, nullptr);
  lua_settop(lua, 1);
  if (luaL_loadfilex(lua, path, "t") != LUA_OK) return FailWhere(lua);
  lua_callk(lua, 0, LUA_MULTRET, 0, AllResults);
  return AllResults(lua, LUA_OK, 0);
}

// The searcher for Lua files that `require` asks. Upvalues: the table `package`, its function `searchpath`.
int FindModule(lua_State* lua) {
  const char* name = luaL_checkstring(lua, 1);
  lua_pushvalue(lua, lua_upvalueindex(2));
  lua_pushvalue(lua, 1);
  lua_getfield(lua, lua_upvalueindex(1), "path");
  if (lua_isstring(lua, -1) == 0) return luaL_error(lua, "'package.path' must be a string");
  lua_call(lua, 2, 2);
  if (lua_isnil(lua, -2)) return 1;  // the message where it was looked for
  const char* path = lua_tostring(lua, -2);
  if (luaL_loadfilex(lua, path, "t") == LUA_OK) {
    lua_pushstring(lua, path);
    return 2;
  }
  lua_pushfstring(lua, "error loading module '%s' from file '%s':\n\t%s", name, path, lua_tostring(lua, -1));
  return FailWhere(lua);
}

// The searcher for modules in a folder of ours. Upvalues: the library's `loadlib`, the folder.
int FindOwnModule(lua_State* lua) {
  const std::string_view name = luaL_checkstring(lua, 1);
  const bool is_word =
      std::all_of(name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) || c == '_'; });
  const char* path = lua_pushfstring(lua, "%s/%s.so", lua_tostring(lua, lua_upvalueindex(2)), name.data());
  if (!is_word || access(path, R_OK) != 0) {
    lua_pushfstring(lua, "no file '%s'", path);
    return 1;
  }
  lua_pushvalue(lua, lua_upvalueindex(1));
  lua_pushvalue(lua, -2);
  lua_pushfstring(lua, "luaopen_%s", name.data());
  lua_call(lua, 2, 2);
  if (lua_isnil(lua, -2)) return FailWhere(lua);
  lua_pop(lua, 1);
  lua_insert(lua, -2);
  return 2;
}

// Puts `function` in the place of one of the table's functions, which becomes its upvalue.
void Replace(lua_State* lua, const char* table, const char* name, lua_CFunction function) {
  lua_getglobal(lua, table);
  lua_getfield(lua, -1, name);
  lua_pushcclosure(lua, function, 1);
  lua_setfield(lua, -2, name);
  lua_pop(lua, 1);
}

// Leaves `package.searchers` with that for loaded modules and ours.
void ReplaceSearchers(lua_State* lua) {
  lua_getglobal(lua, "package");
  lua_getfield(lua, -1, "searchers");
  lua_pushvalue(lua, -2);
  lua_getfield(lua, -3, "searchpath");
  lua_pushcclosure(lua, FindModule, 2);
  lua_rawseti(lua, -2, 2);
  for (int i = static_cast<int>(lua_rawlen(lua, -1)); i > 2; --i) {
    lua_pushnil(lua);
    lua_rawseti(lua, -2, i);
  }
  lua_pop(lua, 1);
  for (const char* name : {"loadlib", "cpath"}) {
    lua_pushnil(lua);
    lua_setfield(lua, -2, name);
  }
  lua_pop(lua, 1);
}

void KeepOfDebug(lua_State* lua) {
  lua_getglobal(lua, "debug");
  lua_newtable(lua);
  for (const char* name : {"gethook", "getinfo", "traceback"}) {
    lua_getfield(lua, -2, name);
    lua_setfield(lua, -2, name);
  }
  lua_pushvalue(lua, -1);
  lua_setglobal(lua, "debug");
  luaL_getsubtable(lua, LUA_REGISTRYINDEX, LUA_LOADED_TABLE);
  lua_insert(lua, -2);
  lua_setfield(lua, -2, "debug");
  lua_pop(lua, 2);
}

}  // namespace

void OpenLibraries(lua_State* lua, bool allow_c_modules) {
  luaL_openlibs(lua);
  lua_getglobal(lua, "package");
  lua_getfield(lua, -1, "loadlib");
  lua_setfield(lua, LUA_REGISTRYINDEX, kLoadLibrary);
  lua_pop(lua, 1);
  Replace(lua, "_G", "load", LoadText<3>);
  Replace(lua, "_G", "loadfile", LoadTextFile);
  for (const char* name : {"open", "lines", "input", "output"}) Replace(lua, "io", name, UsePaths<1>);
  Replace(lua, "os", "remove", UsePaths<1>);
  Replace(lua, "os", "rename", UsePaths<2>);
  lua_pushcfunction(lua, DoFile);
  lua_setglobal(lua, "dofile");
  KeepOfDebug(lua);
  if (!allow_c_modules) ReplaceSearchers(lua);
}

void AddModuleFolder(lua_State* lua, const std::string& folder) {
  lua_getglobal(lua, "package");
  lua_getfield(lua, -1, "searchers");
  lua_getfield(lua, LUA_REGISTRYINDEX, kLoadLibrary);
  PushString(lua, folder);
  lua_pushcclosure(lua, FindOwnModule, 2);
  lua_rawseti(lua, -2, static_cast<lua_Integer>(lua_rawlen(lua, -2)) + 1);
  lua_pop(lua, 2);
}

}  // namespace host
