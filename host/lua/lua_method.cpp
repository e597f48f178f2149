#include "host/lua/lua_method.h"

#include "host/core/text.h"
#include "host/host/dispatch.h"
#include "host/lua/lua_error.h"
#include "host/lua/lua_object.h"
#include "host/lua/lua_state.h"
#include "host/lua/lua_text.h"
#include "host/lua/lua_value.h"

namespace host {
namespace {

constexpr const char* kMetatable = "host.method";

// The userdata; its user value is the object, nil for a global method.
struct BoundMethod {
  const MemberGroup* group;
};

const MemberGroup& RequireMethod(lua_State* lua) {
  const auto* method = static_cast<BoundMethod*>(luaL_testudata(lua, 1, kMetatable));
  if (method == nullptr) throw UsageError(Text("a method is needed, not ", WithArticle(luaL_typename(lua, 1))));
  return *method->group;
}

// Pushes the bound object (or nil) and gives the reference to it.
Ref<Object> PushBoundObject(lua_State* lua) {
  lua_getiuservalue(lua, 1, 1);
  return ToObject(lua, -1);
}

// A group's overloads agree on whether their result is a string.
void PushMethodResult(lua_State* lua, const MemberGroup& group, const Value& result) {
  PushResult(lua, group.overloads.front()->declaration.result, result);
}

int Call(lua_State* lua) {
  const MemberGroup& group = RequireMethod(lua);
  const int last = lua_gettop(lua);
  const Ref<Object> object = PushBoundObject(lua);
  const bool called_with_colon = object && last >= 2 && lua_rawequal(lua, 2, -1) != 0;
  const Value result = CallMethod(HostOf(lua), object, group, ToValues(lua, called_with_colon ? 3 : 2, last));
  if (group.overloads.front()->declaration.result.kind == Type::Kind::kNothing) return 0;
  PushMethodResult(lua, group, result);
  return 1;
}

int Index(lua_State* lua) {
  const MemberGroup& group = RequireMethod(lua);
  const Ref<Object> object = PushBoundObject(lua);
  if (lua_type(lua, 2) == LUA_TSTRING && object) {
    throw UsageError(Text(object->type_name(), ".", group.name, " is a method; call it: ", group.name, "()"));
  }
  PushMethodResult(lua, group, CallMethod(HostOf(lua), object, group, {ToValue(lua, 2)}));
  return 1;
}

int NewIndex(lua_State* lua) {
  const MemberGroup& group = RequireMethod(lua);
  const Ref<Object> object = PushBoundObject(lua);
  AssignMethod(HostOf(lua), object, group, {ToValue(lua, 2)}, ToValue(lua, 3));
  return 0;
}

int ToText(lua_State* lua) {
  const MemberGroup& group = RequireMethod(lua);
  const Ref<Object> object = PushBoundObject(lua);
  PushString(lua, object ? Text("method ", object->type_name(), ".", group.name) : Text("method ", group.name));
  return 1;
}

void PushUnbound(lua_State* lua, const MemberGroup& group) {
  static_cast<BoundMethod*>(lua_newuserdatauv(lua, sizeof(BoundMethod), 1))->group = &group;
  luaL_setmetatable(lua, kMetatable);
}

}  // namespace

void OpenMethods(lua_State* lua) {
  luaL_newmetatable(lua, kMetatable);
  const luaL_Reg functions[] = {
      {"__call", Guarded<Call>},       {"__index", Guarded<Index>}, {"__newindex", Guarded<NewIndex>},
      {"__tostring", Guarded<ToText>}, {nullptr, nullptr},
  };
  luaL_setfuncs(lua, functions, 0);
  lua_pushboolean(lua, 0);
  lua_setfield(lua, -2, "__metatable");
  lua_pop(lua, 1);
}

void PushBoundMethod(lua_State* lua, const MemberGroup& group, int object_index) {
  object_index = lua_absindex(lua, object_index);
  PushUnbound(lua, group);
  lua_pushvalue(lua, object_index);
  lua_setiuservalue(lua, -2, 1);
}

void PushGlobalMethod(lua_State* lua, const MemberGroup& group) { PushUnbound(lua, group); }

}  // namespace host
