// Lua 5.4.4's `..` remembers where in its stack it is while a metamethod runs, and goes on there when the stack has
// moved meanwhile: a script can crash any program that way. Here such a metamethod runs as a coroutine, on a stack of
// its own, and stacks are not made smaller by collections, so that nothing moves.
//
// These take the places of two of the library's own functions: the linker is told to call them (--wrap).

#include <lua.hpp>

namespace {

// In Lua's registry: the metamethod's name, and coroutines that wait for the next call.
const char kName = 0, kWaiting = 0;

// No collection, and no finalizer on this thread's stack, for as long as it lives.
class CollectorPause {
 public:
  explicit CollectorPause(lua_State* lua) : lua_(lua), ran_(lua_gc(lua, LUA_GCISRUNNING) == 1) {
    if (ran_) lua_gc(lua_, LUA_GCSTOP);
  }
  CollectorPause(const CollectorPause&) = delete;
  CollectorPause& operator=(const CollectorPause&) = delete;
  ~CollectorPause() {
    if (ran_) lua_gc(lua_, LUA_GCRESTART);
  }

 private:
  lua_State* lua_;
  bool ran_;  // not within a finalizer, nor where the script has stopped it
};

void MakeRoom(lua_State* lua) {
  const CollectorPause pause(lua);
  lua_pushliteral(lua, "__concat");
  lua_rawsetp(lua, LUA_REGISTRYINDEX, &kName);
  lua_newtable(lua);
  lua_rawsetp(lua, LUA_REGISTRYINDEX, &kWaiting);
}

// Pushes a coroutine without anything on its stack. Nothing is allocated for one that has waited, so the collector
// keeps its pace.
lua_State* TakeCoroutine(lua_State* lua) {
  if (lua_rawgetp(lua, LUA_REGISTRYINDEX, &kWaiting) != LUA_TTABLE) {
    lua_pop(lua, 1);
    MakeRoom(lua);
    lua_rawgetp(lua, LUA_REGISTRYINDEX, &kWaiting);
  }
  const auto count = static_cast<lua_Integer>(lua_rawlen(lua, -1));
  if (count == 0) {
    lua_pop(lua, 1);
    const CollectorPause pause(lua);
    return lua_newthread(lua);
  }
  lua_rawgeti(lua, -1, count);
  lua_pushnil(lua);
  lua_rawseti(lua, -3, count);
  lua_replace(lua, -2);
  lua_State* taken = lua_tothread(lua, -1);
  lua_sethook(taken, lua_gethook(lua), lua_gethookmask(lua), lua_gethookcount(lua));
  return taken;
}

// Takes the coroutine on top away.
void PutBack(lua_State* lua) {
  lua_rawgetp(lua, LUA_REGISTRYINDEX, &kWaiting);
  lua_insert(lua, -2);
  lua_rawseti(lua, -2, static_cast<lua_Integer>(lua_rawlen(lua, -2)) + 1);
  lua_pop(lua, 1);
}

// Pushes the metamethod of the value there, if it has one.
bool PushMetamethod(lua_State* lua, int index) {
  if (lua_getmetatable(lua, index) == 0) return false;
  lua_rawgetp(lua, LUA_REGISTRYINDEX, &kName);
  lua_rawget(lua, -2);
  lua_replace(lua, -2);
  if (!lua_isnil(lua, -1)) return true;
  lua_pop(lua, 1);
  return false;
}

}  // namespace

void ConcatenateAsItIs(lua_State* lua) asm("__real__Z16luaT_tryconcatTMP9lua_State");
void Concatenate(lua_State* lua) asm("__wrap__Z16luaT_tryconcatTMP9lua_State");
void KeepStack(lua_State* lua) asm("__wrap__Z16luaD_shrinkstackP9lua_State");

// Takes the two operands on top; the result is put in the first one's place, and the second one's stays. Three more
// places are used of the five that a stack has in reserve.
void Concatenate(lua_State* lua) {
  lua_State* call = TakeCoroutine(lua);
  if (!PushMetamethod(lua, -3) && !PushMetamethod(lua, -2)) {
    PutBack(lua);
    return ConcatenateAsItIs(lua);  // which raises the error
  }
  lua_xmove(lua, call, 1);
  for (int i = 0; i < 2; ++i) {
    lua_pushvalue(lua, -3 + i);
    lua_xmove(lua, call, 1);
  }
  int results = 0;
  const int status = lua_resume(call, lua, 2, &results);
  if (status == LUA_YIELD) {
    lua_resetthread(call);
    luaL_error(lua, "attempt to yield from a concatenation");
  }
  if (status != LUA_OK) {
    lua_resetthread(call);  // the error stays on top
    lua_xmove(call, lua, 1);
    lua_error(lua);
  }
  lua_settop(call, 1);
  lua_xmove(call, lua, 1);
  lua_replace(lua, -4);
  PutBack(lua);
}

void KeepStack(lua_State* /*lua*/) {}
