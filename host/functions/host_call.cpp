#include "host/functions/host_call.h"

namespace host {

std::string ShowHandle(const void* handle) {
  if (handle == nullptr) return "nil";
  const Counted* thing = Host::Current().heap().Peek(handle);
  return thing != nullptr ? thing->Describe() : Text(handle);
}

bool HostCall::CountCall(const char* name) {
  Host::CallCount& count = Host::Current().call_count(name);
  return ++count.called == count.failing_call;
}

}  // namespace host
