// The host functions by which a plugin registers what scripts see.

#include <vector>

#include "host/core/fault.h"
#include "host/functions/host_call.h"
#include "host/functions/host_functions.h"

namespace host {
namespace {

template <class Record, class Visit>
void ForEach(Record* records, int64_t count, Visit visit) {
  for (int64_t i = 0; records != nullptr && i < count; ++i) visit(records[i]);
}

void AddDefinedMembers(Class& to, const REALclassDefinition& definition) {
  const auto add_property = [&](const REALproperty& record) {
    to.members.Add(std::make_unique<Property>(record, to.name));
  };
  const auto add_method = [&](const REALmethodDefinition& record) {
    to.members.Add(std::make_unique<Method>(record, to.name, true));
  };
  ForEach(definition.properties, definition.property_count, add_property);
  ForEach(definition.methods, definition.method_count, add_method);
  ForEach(definition.properties2, definition.property_count2, add_property);
  ForEach(definition.methods2, definition.method_count2, add_method);
}

// Runs a registration; a record that cannot be understood is a fault.
template <class Register>
void Understand(Register run) {
  try {
    run();
  } catch (const std::exception& error) {
    Fault(error.what());
  }
}

// A global method, or an extension method where its declaration says so.
void AddFreeMethod(Host& host, const REALmethodDefinition& record) {
  auto method = std::make_unique<Method>(record, "", false);
  if (method->extended_class.empty()) {
    host.globals().Add(std::move(method));
    return;
  }
  Class* extended = host.FindClass(method->extended_class);
  if (extended == nullptr) Fault(Text("\"", method->text, "\" extends an unknown class"));
  extended->members.Add(std::move(method));
}

// Definition records are the host's to keep as long as the process lives: leak checkers see that they have an owner.
void KeepForGood(const void* record) {
  static auto& kept = *new std::vector<const void*>;
  kept.push_back(record);
}

double REALGetRBVersion() {
  HostCall call("REALGetRBVersion");
  return call.Result(*call.host().options().version);
}

void RegisterPluginVersion(int32_t version) {
  HostCall call("RegisterPluginVersion", version);
  call.host().set_plugin_version(version);
}

void PluginRegisterClass(REALclassDefinition* definition) {
  HostCall call("PluginRegisterClass", definition->name);
  Host& host = call.host();
  if (host.FindClass(definition->name) != nullptr) Fault(Text("class ", definition->name, " exists already"));
  Class& registered = host.AddClass(definition->name, Instance::New);
  registered.definition = definition;
  definition->instance_offset = InstanceOffset(host.NextClassNumber());
  Understand([&] { AddDefinedMembers(registered, *definition); });
}

void PluginRegisterClassExtension(REALclassDefinition* definition) {
  HostCall call("PluginRegisterClassExtension", definition->name);
  Class* extended = call.host().FindClass(definition->name);
  if (extended == nullptr) Fault(Text("an unknown class, ", definition->name, ", is extended"));
  Understand([&] { AddDefinedMembers(*extended, *definition); });
}

void PluginRegisterModule(REALmoduleDefinition* definition) {
  HostCall call("PluginRegisterModule", definition->name);
  KeepForGood(definition);
  Host& host = call.host();
  Module module{definition->name, definition->version, {}};
  ForEach(definition->methods, definition->method_count, [&](const REALmethodDefinition& record) {
    module.declarations.emplace_back(record.declaration);
    if ((record.flags & kModuleMethod) != 0) Understand([&] { AddFreeMethod(host, record); });
  });
  host.modules().push_back(std::move(module));
}

void PluginRegisterMethod(REALmethodDefinition* definition) {
  HostCall call("PluginRegisterMethod", definition->declaration);
  Understand([&] { AddFreeMethod(call.host(), *definition); });
}

}  // namespace

std::span<const HostFunction> RegistrationFunctions() {
  static const HostFunction functions[] = {
      Offered<REALGetRBVersion>("REALGetRBVersion"),
      Offered<RegisterPluginVersion>("RegisterPluginVersion"),
      Offered<PluginRegisterClass>("PluginRegisterClass"),
      Offered<PluginRegisterClassExtension>("PluginRegisterClassExtension"),
      Offered<PluginRegisterModule>("PluginRegisterModule"),
      Offered<PluginRegisterMethod>("PluginRegisterMethod"),
  };
  return functions;
}

}  // namespace host
