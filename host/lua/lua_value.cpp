#include "host/lua/lua_value.h"

#include "host/lua/lua_object.h"
#include "host/lua/lua_state.h"
#include "host/lua/lua_text.h"

namespace host {
namespace {

Value NumberToValue(lua_State* lua, int index) {
  int is_whole = 0;
  const lua_Integer integer = lua_tointegerx(lua, index, &is_whole);
  if (is_whole != 0) return static_cast<int64_t>(integer);
  return Foreign{"number", lua_tonumber(lua, index)};
}

}  // namespace

Value ToValue(lua_State* lua, int index) {
  switch (lua_type(lua, index)) {
    case LUA_TNIL:
    case LUA_TNONE:
      return {};
    case LUA_TBOOLEAN:
      return lua_toboolean(lua, index) != 0;
    case LUA_TNUMBER:
      return NumberToValue(lua, index);
    case LUA_TSTRING: {
      size_t length = 0;
      const char* bytes = lua_tolstring(lua, index, &length);
      return HandleValue(HostOf(lua).NewString({bytes, length}));
    }
    default:
      break;
  }
  if (const Ref<Object> object = ToObject(lua, index)) return HandleValue(object);
  return Foreign{luaL_typename(lua, index)};
}

std::vector<Value> ToValues(lua_State* lua, int first, int last) {
  std::vector<Value> values;
  if (last >= first) values.reserve(static_cast<size_t>(last - first) + 1);
  for (int i = first; i <= last; ++i) values.push_back(ToValue(lua, i));
  return values;
}

void PushValue(lua_State* lua, const Value& value) {
  if (const auto* boolean = std::get_if<bool>(&value)) {
    lua_pushboolean(lua, *boolean ? 1 : 0);
  } else if (const auto* integer = std::get_if<int64_t>(&value)) {
    lua_pushinteger(lua, *integer);
  } else if (const Ref<String> string = ValueAs<String>(value)) {
    PushString(lua, string->bytes());
  } else if (const Ref<Object> object = ValueAs<Object>(value)) {
    PushObject(lua, object);
  } else {
    lua_pushnil(lua);
  }
}

void PushResult(lua_State* lua, const Type& type, const Value& value) {
  if (type.kind == Type::Kind::kString && std::holds_alternative<std::monostate>(value)) {
    PushString(lua, "");
  } else {
    if (type.kind == Type::Kind::kColor) ContextOf(lua).last_color = std::get<int64_t>(value);
    PushValue(lua, value);
  }
}

}  // namespace host
