#include "host/lua/lua_members.h"

#include <string>
#include <string_view>

#include "host/core/text.h"
#include "host/host/dispatch.h"
#include "host/host/memory_block.h"
#include "host/lua/lua_error.h"
#include "host/lua/lua_method.h"
#include "host/lua/lua_object.h"
#include "host/lua/lua_state.h"
#include "host/lua/lua_text.h"
#include "host/lua/lua_value.h"

namespace host {
namespace {

// Tables and the like are named by their type: asking what they are would run the script's code.
std::string KeyText(lua_State* lua, int index) {
  if (lua_type(lua, index) != LUA_TNUMBER) return WithArticle(luaL_typename(lua, index));
  std::string key = luaL_tolstring(lua, index, nullptr);
  lua_pop(lua, 1);
  return key;
}

std::string_view Name(lua_State* lua, int index) {
  size_t length = 0;
  const char* name = lua_tolstring(lua, index, &length);
  return {name, length};
}

// The group for `object[key]`: bytes of a MemoryBlock by number, everything else by name.
const MemberGroup& RequireKey(lua_State* lua, const Ref<Object>& object) {
  if (lua_type(lua, 2) == LUA_TSTRING) return RequireMember(object->object_class(), Name(lua, 2));
  if (lua_isinteger(lua, 2) != 0 && dynamic_cast<MemoryBlock*>(object.get()) != nullptr) {
    return RequireMember(object->object_class(), "Byte");
  }
  const bool counted = lua_isinteger(lua, 2) != 0 && object->object_class().Find("Count") != nullptr;
  throw UsageError(Text(object->type_name(), " can't be indexed with ", KeyText(lua, 2),
                        counted ? "; pairs() goes through what it counts" : ""));
}

int Index(lua_State* lua) {
  const Ref<Object> object = RequireObject(lua, 1);
  const MemberGroup& group = RequireKey(lua, object);
  Host& host = HostOf(lua);
  if (group.property) {
    PushResult(lua, group.property->type, GetProperty(host, object, *group.property));
  } else if (lua_isinteger(lua, 2) != 0) {
    PushValue(lua, CallMethod(host, object, group, {ToValue(lua, 2)}));
  } else {
    PushBoundMethod(lua, group, 1);
  }
  return 1;
}

int NewIndex(lua_State* lua) {
  const Ref<Object> object = RequireObject(lua, 1);
  const MemberGroup& group = RequireKey(lua, object);
  Host& host = HostOf(lua);
  if (group.property) {
    SetProperty(host, object, *group.property, ToValue(lua, 3));
  } else {
    std::vector<Value> arguments;
    if (lua_isinteger(lua, 2) != 0) arguments.push_back(ToValue(lua, 2));
    AssignMethod(host, object, group, std::move(arguments), ToValue(lua, 3));
  }
  return 0;
}

int64_t CountOf(Host& host, const Ref<Object>& object) {
  if (const auto* block = dynamic_cast<MemoryBlock*>(object.get())) return block->size();
  const MemberGroup* count = object->object_class().Find("Count");
  if (count == nullptr || !count->property || count->property->type.kind != Type::Kind::kInteger) {
    throw UsageError(object->type_name() + " has no Count");
  }
  return std::get<int64_t>(GetProperty(host, object, *count->property));
}

int Length(lua_State* lua) {
  lua_pushinteger(lua, CountOf(HostOf(lua), RequireObject(lua, 1)));
  return 1;
}

bool GivesElement(const Method& method) {
  const auto& parameters = method.declaration.parameters;
  return method.handler != nullptr && parameters.size() == 1 &&
         parameters.front().type.kind == Type::Kind::kInteger &&
         method.declaration.result.kind == Type::Kind::kObject;
}

// The one method of a class that takes an index and gives an object.
const MemberGroup& RequireElements(const Class& object_class) {
  const MemberGroup* elements = nullptr;
  int found = 0;
  for (const auto& [name, group] : object_class.members.all()) {
    for (const auto& method : group.overloads) {
      if (!GivesElement(*method)) continue;
      elements = &group;
      ++found;
    }
  }
  if (found != 1) throw UsageError(object_class.name + " has no elements to go through");
  return *elements;
}

// Upvalues: the object, the number of elements when the loop began, what gives them. Arguments: state, last index.
int NextElement(lua_State* lua) {
  const Ref<Object> object = RequireObject(lua, lua_upvalueindex(1));
  const lua_Integer count = lua_tointeger(lua, lua_upvalueindex(2));
  const lua_Integer last = lua_isinteger(lua, 2) != 0 ? lua_tointeger(lua, 2) : -1;
  if (last < -1 || last >= count - 1) return 0;
  const lua_Integer next = last + 1;
  const auto& elements = *static_cast<const MemberGroup*>(lua_touserdata(lua, lua_upvalueindex(3)));
  lua_pushinteger(lua, next);
  PushValue(lua, CallMethod(HostOf(lua), object, elements, {Value(int64_t{next})}));
  return 2;
}

int Pairs(lua_State* lua) {
  const Ref<Object> object = RequireObject(lua, 1);
  const MemberGroup& elements = RequireElements(object->object_class());
  lua_pushvalue(lua, 1);
  lua_pushinteger(lua, CountOf(HostOf(lua), object));
  lua_pushlightuserdata(lua, const_cast<MemberGroup*>(&elements));
  lua_pushcclosure(lua, Guarded<NextElement>, 3);
  return 1;
}

int ToText(lua_State* lua) {
  const Ref<Object> object = RequireObject(lua, 1);
  const auto* block = dynamic_cast<MemoryBlock*>(object.get());
  if (block == nullptr) {
    PushString(lua, object->Describe());
  } else {
    PushString(lua, {reinterpret_cast<const char*>(block->bytes()), static_cast<size_t>(block->size())});
  }
  return 1;
}

}  // namespace

void OpenMembers(lua_State* lua) {
  PushObjectMetatable(lua);
  const luaL_Reg functions[] = {
      {"__index", Guarded<Index>}, {"__newindex", Guarded<NewIndex>}, {"__len", Guarded<Length>},
      {"__pairs", Guarded<Pairs>}, {"__tostring", Guarded<ToText>},   {nullptr, nullptr},
  };
  luaL_setfuncs(lua, functions, 0);
  lua_pop(lua, 1);
}

}  // namespace host
