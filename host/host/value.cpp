#include "host/host/value.h"

#include <limits>
#include <string_view>

#include "host/core/text.h"
#include "host/host/class.h"
#include "host/host/object.h"
#include "host/host/string.h"

namespace host {
namespace {

std::string NameOf(const Foreign& foreign) {
  if (std::string_view(foreign.type) != "number") return WithArticle(foreign.type);
  return Text("the number ", foreign.number);
}

}  // namespace

bool Accepts(const Type& type, const Value& value) {
  using Kind = Type::Kind;
  const auto* integer = std::get_if<int64_t>(&value);
  switch (type.kind) {
    case Kind::kNothing:
      return false;
    case Kind::kInteger:
    case Kind::kPointer:
      return integer != nullptr;
    case Kind::kBoolean:
      return std::holds_alternative<bool>(value);
    case Kind::kColor:
      return integer != nullptr && *integer >= 0 && *integer <= std::numeric_limits<uint32_t>::max();
    case Kind::kString:
      return std::holds_alternative<std::monostate>(value) || ValueAs<String>(value);
    case Kind::kObject:
      if (std::holds_alternative<std::monostate>(value)) return true;
      const Ref<Object> object = ValueAs<Object>(value);
      return object && object->object_class().IsA(type.name);
  }
  return false;
}

std::string WithArticle(const std::string& noun) {
  const bool vowel = std::string_view("AEIOUaeiou").find(noun.front()) != std::string_view::npos;
  return (vowel ? "an " : "a ") + noun;
}

std::string NameOf(const Value& value) {
  if (std::holds_alternative<std::monostate>(value)) return "nil";
  if (std::holds_alternative<bool>(value)) return "a Boolean";
  if (const auto* integer = std::get_if<int64_t>(&value)) return Text("the Integer ", *integer);
  if (const auto* foreign = std::get_if<Foreign>(&value)) return NameOf(*foreign);
  return WithArticle(std::get<Ref<Counted>>(value)->type_name());
}

std::string Show(const Value& value) {
  if (std::holds_alternative<std::monostate>(value)) return "nil";
  if (const auto* boolean = std::get_if<bool>(&value)) return *boolean ? "true" : "false";
  if (const auto* integer = std::get_if<int64_t>(&value)) return Text(*integer);
  if (const auto* foreign = std::get_if<Foreign>(&value)) return NameOf(*foreign);
  return std::get<Ref<Counted>>(value)->Describe();
}

}  // namespace host
