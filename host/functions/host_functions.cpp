#include "host/functions/host_functions.h"

#include <exception>
#include <map>
#include <new>
#include <string_view>

#include "host/host/host.h"

namespace host {

REALproc FindHostFunction(const char* name) {
  static const auto functions = [] {
    std::map<std::string_view, REALproc> by_name;
    for (const auto& group : {RegistrationFunctions(), ObjectFunctions(), StringFunctions(), MemoryBlockFunctions(),
                              FileFunctions(), PictureFunctions()}) {
      for (const HostFunction& function : group) by_name.emplace(function.name, function.function);
    }
    return by_name;
  }();
  const auto found = functions.find(name);
  return found == functions.end() ? nullptr : found->second;
}

void RaiseUnlessMemory() {
  try {
    throw;
  } catch (const std::bad_alloc&) {
    // As the result says.
  } catch (const std::exception& error) {
    Host::Current().Raise(RaisedException("RuntimeException", error.what()));
  }
}

}  // namespace host
