#include "host/lua/lua_object.h"

#include <new>

#include "host/core/text.h"
#include "host/host/errors.h"
#include "host/host/value.h"
#include "host/lua/lua_error.h"
#include "host/lua/lua_state.h"

namespace host {
namespace {

// Keys of the registry, by their addresses: found sooner than names.
const char kMetatable = 0;
const char kCache = 0;  // handle → userdata, weak

// The reference inside an object's userdata; null when the value is none. Owned by Lua, and null itself after
// Collect.
Ref<Object>* Inside(lua_State* lua, int index) {
  void* data = lua_touserdata(lua, index);
  if (data == nullptr || lua_getmetatable(lua, index) == 0) return nullptr;
  const bool is_object = lua_topointer(lua, -1) == ContextOf(lua).object_metatable;
  lua_pop(lua, 1);
  return is_object ? static_cast<Ref<Object>*>(data) : nullptr;
}

// What is left is a null reference, which needs no destructor: scripts can meet the userdata again, or call this.
int Collect(lua_State* lua) {
  Ref<Object>* held = Inside(lua, 1);
  if (held == nullptr)
    throw UsageError(Text("only objects can be given up, not ", WithArticle(luaL_typename(lua, 1))));
  *held = Ref<Object>();
  return 0;
}

// The userdata that Lua knows the object by already, if any.
bool PushKnown(lua_State* lua, const Ref<Object>& object) {
  lua_rawgetp(lua, -1, object->handle());
  const Ref<Object>* known = Inside(lua, -1);
  if (known != nullptr && *known == object) return true;
  lua_pop(lua, 1);
  return false;
}

}  // namespace

void OpenObjects(lua_State* lua) {
  lua_newtable(lua);
  ContextOf(lua).object_metatable = lua_topointer(lua, -1);
  lua_pushliteral(lua, "host.object");
  lua_setfield(lua, -2, "__name");
  lua_pushcfunction(lua, Guarded<Collect>);
  lua_setfield(lua, -2, "__gc");
  lua_pushboolean(lua, 0);
  lua_setfield(lua, -2, "__metatable");
  lua_rawsetp(lua, LUA_REGISTRYINDEX, &kMetatable);

  lua_newtable(lua);
  lua_createtable(lua, 0, 1);
  lua_pushstring(lua, "v");
  lua_setfield(lua, -2, "__mode");
  lua_setmetatable(lua, -2);
  lua_rawsetp(lua, LUA_REGISTRYINDEX, &kCache);
}

void PushObjectMetatable(lua_State* lua) { lua_rawgetp(lua, LUA_REGISTRYINDEX, &kMetatable); }

void PushObject(lua_State* lua, const Ref<Object>& object) {
  lua_rawgetp(lua, LUA_REGISTRYINDEX, &kCache);
  if (!PushKnown(lua, object)) {
    PushObjectMetatable(lua);
    new (lua_newuserdatauv(lua, sizeof(Ref<Object>), 0)) Ref<Object>(object);
    lua_insert(lua, -2);
    lua_setmetatable(lua, -2);
    lua_pushvalue(lua, -1);
    lua_rawsetp(lua, -3, object->handle());
  }
  lua_remove(lua, -2);
}

bool IsObject(lua_State* lua, int index) { return Inside(lua, index) != nullptr; }

Ref<Object> ToObject(lua_State* lua, int index) {
  const Ref<Object>* held = Inside(lua, index);
  if (held == nullptr) return {};
  if (!*held) throw UsageError("the object is dead: Lua has given it up already");
  return *held;
}

Ref<Object> RequireObject(lua_State* lua, int index) {
  Ref<Object> object = ToObject(lua, index);
  if (!object) throw UsageError(Text("an object is needed, not ", WithArticle(luaL_typename(lua, index))));
  return object;
}

}  // namespace host
