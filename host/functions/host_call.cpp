#include "host/functions/host_call.h"

namespace host {

std::string HostCall::Show(const void* handle) const {
  if (handle == nullptr) return "nil";
  const Counted* thing = host_.heap().Peek(handle);
  return thing != nullptr ? thing->Describe() : Text(handle);
}

bool HostCall::CountCall(const char* name) const {
  Host::CallCount& count = host_.CountOf(name);
  return ++count.called == count.failing_call;
}

}  // namespace host
