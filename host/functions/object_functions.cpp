// The host functions for objects, their methods and properties, and exceptions.

#include "host/functions/host_call.h"
#include "host/functions/host_functions.h"
#include "host/host/dispatch.h"
#include "host/host/exception.h"

namespace host {
namespace {

// Reads or writes a property of the object on the plugin's behalf. False when there is no such property of
// that type, or its handler raised; what it raised is pending then.
template <class Access>
bool AccessProperty(Host& host, const void* handle, const char* name, Type::Kind type, Access access) {
  const Ref<Object> object(host.heap().Find<Object>(handle));
  if (!object || name == nullptr) return false;
  const MemberGroup* group = object->object_class().Find(name);
  if (group == nullptr || !group->property || group->property->type.kind != type) return false;
  try {
    access(object, *group->property);
    return true;
  } catch (const RaisedException& raised) {
    host.Raise(raised);
  } catch (const UsageError&) {
    // Read-only, or write-only: it cannot be done, as the result says.
  }
  return false;
}

bool SetPropertyOfKind(Host& host, const void* handle, const char* name, Type::Kind type, const Value& value) {
  return AccessProperty(host, handle, name, type, [&](const Ref<Object>& object, const Property& property) {
    SetProperty(host, object, property, value);
  });
}

template <class T, class Out>
bool GetPropertyOfKind(Host& host, const void* handle, const char* name, Type::Kind type, Out* out) {
  return out != nullptr &&
         AccessProperty(host, handle, name, type, [&](const Ref<Object>& object, const Property& property) {
           *out = static_cast<Out>(std::get<T>(GetProperty(host, object, property)));
         });
}

REALobjectStruct* PluginNewInstance(const char* class_name) {
  HostCall call("PluginNewInstance", class_name);
  Host& host = call.host();
  if (call.fails() || class_name == nullptr || host.IsWithheld(class_name)) return nullptr;
  const Class* wanted = host.FindClass(class_name);
  if (wanted == nullptr || wanted->maker == nullptr) return nullptr;
  return call.HandOut<REALobjectStruct>(wanted->maker(host.heap(), *wanted));
}

void REALLockObject(REALobjectStruct* object) {
  HostCall call("REALLockObject", object);
  call.host().heap().HandOut(call.Find<Object>(object));
}

void REALUnlockObject(REALobjectStruct* object) {
  HostCall call("REALUnlockObject", object);
  call.host().heap().GiveUp(call.Find<Object>(object));
}

REALproc REALLoadObjectMethod(REALobjectStruct* object, const char* declaration) {
  HostCall call("REALLoadObjectMethod", object, declaration);
  const Object* target = call.Find<Object>(object);
  if (target == nullptr || declaration == nullptr) return nullptr;
  const Method* method = target->object_class().FindDeclared(declaration);
  if (method == nullptr || call.host().IsWithheld(method->declaration.name)) return nullptr;
  return method->handler;
}

REALproc REALLoadGlobalMethod(const char* module_name, const char* declaration) {
  HostCall call("REALLoadGlobalMethod", module_name, declaration);
  if (module_name != nullptr || declaration == nullptr) return nullptr;
  Host& host = call.host();
  for (const auto& [name, group] : host.globals().all()) {
    if (host.IsWithheld(name)) continue;
    for (const auto& method : group.overloads) {
      if (method->text == declaration) return method->handler;
    }
  }
  return nullptr;
}

int8_t REALGetPropValueInteger(REALobjectStruct* object, const char* name, int64_t* value) {
  HostCall call("REALGetPropValueInteger", object, name);
  return call.Result<int8_t>(GetPropertyOfKind<int64_t>(call.host(), object, name, Type::Kind::kInteger, value));
}

int8_t REALGetPropValueBool(REALobjectStruct* object, const char* name, int8_t* value) {
  HostCall call("REALGetPropValueBool", object, name);
  return call.Result<int8_t>(GetPropertyOfKind<bool>(call.host(), object, name, Type::Kind::kBoolean, value));
}

int8_t REALSetPropValueString(REALobjectStruct* object, const char* name, REALstringStruct* value) {
  HostCall call("REALSetPropValueString", object, name, value);
  const Value text = HandleValue(Ref<String>(call.Find<String>(value)));
  return call.Result<int8_t>(SetPropertyOfKind(call.host(), object, name, Type::Kind::kString, text));
}

int8_t REALSetPropValueInteger(REALobjectStruct* object, const char* name, int64_t value) {
  HostCall call("REALSetPropValueInteger", object, name, value);
  return call.Result<int8_t>(SetPropertyOfKind(call.host(), object, name, Type::Kind::kInteger, value));
}

// Class references are not counted: classes stay for good.
const void* pluginObjectType(const char* class_name) {
  HostCall call("pluginObjectType", class_name);
  Host& host = call.host();
  if (class_name == nullptr || host.IsWithheld(class_name)) return nullptr;
  return call.Result(static_cast<const void*>(host.FindClass(class_name)));
}

REALobjectStruct* PluginCallFunctionWithExceptionHandler(void (*function)(void*), void* data) {
  HostCall call("PluginCallFunctionWithExceptionHandler", data);
  Host& host = call.host();
  Ref<Object> pending_before = host.TakePending();
  function(data);
  const Ref<Object> raised = host.TakePending();
  host.Raise(std::move(pending_before));
  return call.HandOut<REALobjectStruct>(raised);
}

void RuntimeRaiseException(REALobjectStruct* exception) {
  HostCall call("RuntimeRaiseException", exception);
  Ref<Object> raised(call.Find<Exception>(exception));
  if (raised) call.host().Raise(std::move(raised));
}

}  // namespace

std::span<const HostFunction> ObjectFunctions() {
  static const HostFunction functions[] = {
      Offered<PluginNewInstance>("PluginNewInstance"),
      Offered<REALLockObject>("REALLockObject"),
      Offered<REALUnlockObject>("REALUnlockObject"),
      Offered<REALLoadObjectMethod>("REALLoadObjectMethod"),
      Offered<REALLoadGlobalMethod>("REALLoadGlobalMethod"),
      Offered<REALGetPropValueInteger>("REALGetPropValueInteger"),
      Offered<REALGetPropValueBool>("REALGetPropValueBool"),
      Offered<REALSetPropValueString>("REALSetPropValueString"),
      Offered<REALSetPropValueInteger>("REALSetPropValueInteger"),
      Offered<pluginObjectType>("pluginObjectType"),
      Offered<PluginCallFunctionWithExceptionHandler>("PluginCallFunctionWithExceptionHandler"),
      Offered<RuntimeRaiseException>("RuntimeRaiseException"),
  };
  return functions;
}

}  // namespace host
