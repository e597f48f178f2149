#include "host/host_call.h"

namespace host {

std::string ShowHandle(const void* handle) {
  if (handle == nullptr) return "nil";
  const Counted* thing = Host::Current().heap().Peek(handle);
  return thing != nullptr ? thing->Describe() : Text(handle);
}

void HostCall::Count(const char* name) { ++Host::Current().call_counts()[name].called; }

}  // namespace host
