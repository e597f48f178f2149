#include "host/host/dispatch.h"

#include <array>
#include <memory_resource>

#include "host/core/fault.h"
#include "host/core/text.h"
#include "host/core/trace.h"

namespace host {
namespace {

Slot ToSlot(Type::Kind kind, const Value& value) {
  Slot slot{};
  if (const auto* integer = std::get_if<int64_t>(&value)) {
    if (kind == Type::Kind::kColor) {
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

// A handler's call: what it is called with, one after the other, and then the call.
class HandlerCall {
 public:
  HandlerCall(Host& host, const std::string& label) : host_(host), label_(label) {}

  void Add(const Ref<Object>& object) {
    Slot slot{};
    if (object) slot.handle = object->handle();
    slots_.push_back(slot);
    if (IsTracing()) Note(object ? object->Describe() : "nil");
  }
  // The value lives as long as this.
  void Add(Type::Kind kind, const Value& value) {
    slots_.push_back(ToSlot(kind, value));
    if (IsTracing()) Note(Show(value));
  }

  Value Run(const CallForm& form, REALproc function, const Type& result_type) {
    Value result;
    {
      HandlerScope scope(label_, [&] { return shown_; });
      const Slot returned = form.Call(function, slots_);
      result = TakeResult(host_, result_type, returned);
      if (scope.traced() && result_type.kind != Type::Kind::kNothing) scope.set_result(Show(result));
    }
    if (const Ref<Object> raised = host_.TakePending()) {
      result = Value();  // a result beside an exception is given up
      dynamic_cast<const Exception&>(*raised).Throw();
    }
    return result;
  }

 private:
  void Note(const std::string& argument) { shown_ += (shown_.empty() ? "" : ", ") + argument; }

  Host& host_;
  const std::string& label_;
  // There are few slots: they lie here.
  std::array<std::byte, 8 * sizeof(Slot)> room_;
  std::pmr::monotonic_buffer_resource memory_{room_.data(), room_.size()};
  std::pmr::vector<Slot> slots_{&memory_};
  std::string shown_;  // when tracing
};

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

using HandlerOf = REALproc Method::*;  // what a group's methods are called or assigned by
using LabelOf = std::string Method::*;

// Why none of them takes the arguments.
[[noreturn]] void RefuseAll(const MemberGroup& group, const std::vector<Value>& arguments, HandlerOf handler_of,
                            LabelOf label_of) {
  std::string signatures;
  std::string label = group.name;
  bool exists = false;
  for (const auto& method : group.overloads) {
    label = (*method).*label_of;
    signatures += (signatures.empty() ? "" : " or ") + SignatureOf(*method);
    if ((*method).*handler_of == nullptr) continue;
    exists = true;
    if (TakesCount(*method, arguments.size())) throw UsageError(Mismatch(label, *method, arguments));
  }
  if (!exists && handler_of == &Method::setter) throw UsageError(label.substr(0, label.size() - 1) + " can't be set");
  throw UsageError(Text(label, " takes ", signatures, ", not ", arguments.size(),
                        arguments.size() == 1 ? " argument" : " arguments"));
}

bool Fits(const Method& method, const std::vector<Value>& arguments) {
  if (!TakesCount(method, arguments.size())) return false;
  for (size_t i = 0; i < arguments.size(); ++i) {
    if (!Accepts(method.declaration.parameters[i].type, arguments[i])) return false;
  }
  return true;
}

// The overload that takes the arguments.
const Method& Choose(const MemberGroup& group, const std::vector<Value>& arguments, HandlerOf handler_of,
                     LabelOf label_of) {
  for (const auto& method : group.overloads) {
    if ((*method).*handler_of != nullptr && Fits(*method, arguments)) return *method;
  }
  RefuseAll(group, arguments, handler_of, label_of);
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

// The object and all arguments.
void AddAll(HandlerCall& call, const Method& method, const Ref<Object>& object, const std::vector<Value>& arguments) {
  if (method.takes_self) call.Add(object);
  for (size_t i = 0; i < arguments.size(); ++i) call.Add(method.declaration.parameters[i].type.kind, arguments[i]);
}

}  // namespace

Value GetProperty(Host& host, const Ref<Object>& object, const Property& property) {
  if (property.getter == nullptr) throw UsageError(property.get_label + " can't be read");
  HandlerCall call(host, property.get_label);
  call.Add(object);
  call.Add(Type::Kind::kInteger, property.parameter);
  return call.Run(property.get_form, property.getter, property.type);
}

void SetProperty(Host& host, const Ref<Object>& object, const Property& property, const Value& value) {
  if (property.setter == nullptr) throw UsageError(property.get_label + " can't be set");
  if (!Accepts(property.type, value)) {
    throw UsageError(Text(property.get_label, " is ", WithArticle(property.type.name), ", not ", NameOf(value)));
  }
  HandlerCall call(host, property.set_label);
  call.Add(object);
  call.Add(Type::Kind::kInteger, property.parameter);
  call.Add(property.type.kind, value);
  call.Run(property.set_form, property.setter, {});
}

Value CallMethod(Host& host, const Ref<Object>& object, const MemberGroup& group, std::vector<Value> arguments) {
  const Method& method = Choose(group, arguments, &Method::handler, &Method::label);
  FillDefaults(method, arguments);
  HandlerCall call(host, method.label);
  AddAll(call, method, object, arguments);
  return call.Run(*method.call_form, method.handler, method.declaration.result);
}

void AssignMethod(Host& host, const Ref<Object>& object, const MemberGroup& group, std::vector<Value> arguments,
                  const Value& value) {
  const Method& method = Choose(group, arguments, &Method::setter, &Method::set_label);
  const Type& type = method.declaration.result;
  if (!Accepts(type, value)) {
    throw UsageError(Text(method.label, " is ", WithArticle(type.name), ", not ", NameOf(value)));
  }
  FillDefaults(method, arguments);
  HandlerCall call(host, method.set_label);
  AddAll(call, method, object, arguments);
  call.Add(type.kind, value);
  call.Run(*method.set_form, method.setter, {});
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
