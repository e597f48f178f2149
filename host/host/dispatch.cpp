#include "host/host/dispatch.h"

#include <algorithm>
#include <functional>

#include "host/core/fault.h"
#include "host/core/text.h"
#include "host/core/trace.h"

namespace host {
namespace {

Slot ToSlot(const Type& type, const Value& value) {
  Slot slot{};
  if (const auto* integer = std::get_if<int64_t>(&value)) {
    if (type.kind == Type::Kind::kColor) {
      slot.color = static_cast<uint32_t>(*integer);
    } else {
      slot.integer = *integer;
    }
  } else if (const auto* boolean = std::get_if<bool>(&value)) {
    slot.boolean = *boolean ? 1 : 0;
  } else if (const auto* reference = std::get_if<Ref<Counted>>(&value)) {
    slot.handle = (*reference)->handle();
  }
  return slot;
}

// Takes over the reference that a handler returned with a handle.
Value TakeResult(Host& host, const Type& type, const Slot& slot) {
  const ActivityScope activity = ActivityScope::Function("returning a result");
  switch (type.kind) {
    case Type::Kind::kNothing:
      return {};
    case Type::Kind::kInteger:
    case Type::Kind::kPointer:
      return slot.integer;
    case Type::Kind::kBoolean:
      return static_cast<int8_t>(slot.widened) != 0;
    case Type::Kind::kColor:
      return static_cast<int64_t>(static_cast<uint32_t>(slot.widened));
    case Type::Kind::kString:
      return HandleValue(host.heap().TakeIn<String>(slot.handle));
    case Type::Kind::kObject:
      break;
  }
  Value object = HandleValue(host.heap().TakeIn<Object>(slot.handle));
  if (!Accepts(type, object)) Fault(Text(Show(object), " was returned as ", WithArticle(type.name)));
  return object;
}

std::string ShowAll(const std::vector<Value>& values) {
  std::string shown;
  for (const Value& value : values) shown += (shown.empty() ? "" : ", ") + Show(value);
  return shown;
}

// `types` are those of `values` and of nothing else.
Value Invoke(Host& host, const std::string& label, const CallForm& form, REALproc function,
             const std::vector<Type>& types, const std::vector<Value>& values, const Type& result_type) {
  std::vector<Slot> slots;
  for (size_t i = 0; i < values.size(); ++i) slots.push_back(ToSlot(types[i], values[i]));
  Value result;
  {
    HandlerScope scope(label, [&] { return ShowAll(values); });
    const Slot returned = form.Call(function, slots);
    result = TakeResult(host, result_type, returned);
    if (scope.traced() && result_type.kind != Type::Kind::kNothing) scope.set_result(Show(result));
  }
  if (const Ref<Object> raised = host.TakePending()) {
    result = Value();  // a result beside an exception is given up
    dynamic_cast<const Exception&>(*raised).Throw();
  }
  return result;
}

const Type kSelf{Type::Kind::kObject, "Object"};
const Type kInteger{Type::Kind::kInteger, "Integer"};

std::string SignatureOf(const Method& method) {
  std::string signature;
  for (const Parameter& parameter : method.declaration.parameters) {
    if (!signature.empty()) signature += ", ";
    signature += parameter.name + " as " + parameter.type.name;
  }
  return signature.empty() ? "no arguments" : "(" + signature + ")";
}

bool TakesCount(const Method& method, size_t count) {
  return count >= method.declaration.RequiredCount() && count <= method.declaration.parameters.size();
}

// Empty when the arguments fit, else what is wrong with the first that does not.
std::string Mismatch(const std::string& label, const Method& method, const std::vector<Value>& arguments) {
  for (size_t i = 0; i < arguments.size(); ++i) {
    const Parameter& parameter = method.declaration.parameters[i];
    if (Accepts(parameter.type, arguments[i])) continue;
    return Text(label, ": parameter ", parameter.name, " is ", WithArticle(parameter.type.name), ", not ",
                NameOf(arguments[i]));
  }
  return "";
}

// The overload that takes the arguments, of those with a handler that `handler_of` gives.
const Method& Choose(const MemberGroup& group, const std::vector<Value>& arguments, REALproc Method::*handler_of,
                     std::string Method::*label_of) {
  std::string complaint;
  std::string signatures;
  std::string label = group.name;
  for (const auto& method : group.overloads) {
    label = (*method).*label_of;
    signatures += (signatures.empty() ? "" : " or ") + SignatureOf(*method);
    if ((*method).*handler_of == nullptr || !TakesCount(*method, arguments.size())) continue;
    const std::string mismatch = Mismatch(label, *method, arguments);
    if (mismatch.empty()) return *method;
    if (complaint.empty()) complaint = mismatch;
  }
  if (!complaint.empty()) throw UsageError(complaint);
  const bool exists = std::any_of(group.overloads.begin(), group.overloads.end(),
                                  [&](const auto& method) { return (*method).*handler_of != nullptr; });
  if (!exists && handler_of == &Method::setter) throw UsageError(label.substr(0, label.size() - 1) + " can't be set");
  throw UsageError(Text(label, " takes ", signatures, ", not ", arguments.size(),
                        arguments.size() == 1 ? " argument" : " arguments"));
}

void FillDefaults(const Method& method, std::vector<Value>& arguments) {
  const auto& parameters = method.declaration.parameters;
  while (arguments.size() < parameters.size()) {
    const Parameter& parameter = parameters[arguments.size()];
    if (parameter.type.IsHandle()) {
      arguments.emplace_back();
    } else if (parameter.type.kind == Type::Kind::kBoolean) {
      arguments.emplace_back(*parameter.default_value != 0);
    } else {
      arguments.emplace_back(*parameter.default_value);
    }
  }
}

std::vector<Type> ArgumentTypes(const Method& method) {
  std::vector<Type> types;
  if (method.takes_self) types.push_back(kSelf);
  for (const Parameter& parameter : method.declaration.parameters) types.push_back(parameter.type);
  return types;
}

void PutSelfFirst(const Method& method, const Ref<Object>& object, std::vector<Value>& arguments) {
  if (method.takes_self) arguments.insert(arguments.begin(), HandleValue(object));
}

}  // namespace

Value GetProperty(Host& host, const Ref<Object>& object, const Property& property) {
  if (property.getter == nullptr) throw UsageError(property.get_label + " can't be read");
  return Invoke(host, property.get_label, property.get_form, property.getter, {kSelf, kInteger},
                {HandleValue(object), property.parameter}, property.type);
}

void SetProperty(Host& host, const Ref<Object>& object, const Property& property, const Value& value) {
  if (property.setter == nullptr) throw UsageError(property.get_label + " can't be set");
  if (!Accepts(property.type, value)) {
    throw UsageError(Text(property.get_label, " is ", WithArticle(property.type.name), ", not ", NameOf(value)));
  }
  Invoke(host, property.set_label, property.set_form, property.setter, {kSelf, kInteger, property.type},
         {HandleValue(object), property.parameter, value}, {});
}

Value CallMethod(Host& host, const Ref<Object>& object, const MemberGroup& group, std::vector<Value> arguments) {
  const Method& method = Choose(group, arguments, &Method::handler, &Method::label);
  FillDefaults(method, arguments);
  PutSelfFirst(method, object, arguments);
  return Invoke(host, method.label, *method.call_form, method.handler, ArgumentTypes(method), arguments,
                method.declaration.result);
}

void AssignMethod(Host& host, const Ref<Object>& object, const MemberGroup& group, std::vector<Value> arguments,
                  const Value& value) {
  const Method& method = Choose(group, arguments, &Method::setter, &Method::set_label);
  const Type& type = method.declaration.result;
  if (!Accepts(type, value)) {
    throw UsageError(Text(method.label, " is ", WithArticle(type.name), ", not ", NameOf(value)));
  }
  FillDefaults(method, arguments);
  PutSelfFirst(method, object, arguments);
  arguments.push_back(value);
  std::vector<Type> types = ArgumentTypes(method);
  types.push_back(type);
  Invoke(host, method.set_label, *method.set_form, method.setter, types, arguments, {});
}

Ref<Object> NewObject(Host& host, std::string_view class_name, std::vector<Value> arguments) {
  const Class& wanted = host.RequireClass(class_name);
  if (wanted.maker == nullptr) throw UsageError(Text(wanted.name, " can't be made by scripts"));
  Ref<Object> made = wanted.maker(host.heap(), wanted);
  const MemberGroup* constructor = wanted.Find("Constructor");
  if (constructor != nullptr && !arguments.empty()) {
    CallMethod(host, made, *constructor, std::move(arguments));
  } else if (!arguments.empty()) {
    throw UsageError(Text(wanted.name, " takes no arguments"));
  }
  return made;
}

Value CallMember(Host& host, const Ref<Object>& object, std::string_view method, std::vector<Value> arguments) {
  const MemberGroup& group = RequireMember(object->object_class(), method);
  if (group.overloads.empty()) {
    throw UsageError(Text(group.property->get_label, " is a property: it is not called"));
  }
  return CallMethod(host, object, group, std::move(arguments));
}

Value CallGlobal(Host& host, std::string_view method, std::vector<Value> arguments) {
  const MemberGroup* group = host.globals().Find(method);
  if (group == nullptr) throw UsageError(Text("there is no global method ", method));
  return CallMethod(host, {}, *group, std::move(arguments));
}

const MemberGroup& RequireMember(const Class& object_class, std::string_view name) {
  const MemberGroup* group = object_class.Find(name);
  if (group != nullptr) return *group;
  const std::string nearest = NearestName(name, object_class.MemberNames());
  throw UsageError(Text(object_class.name, " has no member \"", name, "\"",
                        nearest.empty() ? "" : Text("; did you mean \"", nearest, "\"?")));
}

}  // namespace host
