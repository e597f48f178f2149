#pragma once

// Calls of registered handlers with Values: choice among overloads, checks of arguments and results,
// exceptions. Each throws UsageError (before the handler is called) and RaisedException (after it has
// returned).

#include <string_view>
#include <vector>

#include "host/host/host.h"

namespace host {

Value GetProperty(Host& host, const Ref<Object>& object, const Property& property);
void SetProperty(Host& host, const Ref<Object>& object, const Property& property, const Value& value);

// `object` is null for global methods.
Value CallMethod(Host& host, const Ref<Object>& object, const MemberGroup& group, std::vector<Value> arguments);
void AssignMethod(Host& host, const Ref<Object>& object, const MemberGroup& group, std::vector<Value> arguments,
                  const Value& value);

// The same by name, in any letter case.
Ref<Object> NewObject(Host& host, std::string_view class_name, std::vector<Value> arguments = {});
Value CallMember(Host& host, const Ref<Object>& object, std::string_view method, std::vector<Value> arguments = {});
Value CallGlobal(Host& host, std::string_view method, std::vector<Value> arguments = {});

// The member, or a UsageError that names the class and the nearest member.
const MemberGroup& RequireMember(const Class& object_class, std::string_view name);

}  // namespace host
