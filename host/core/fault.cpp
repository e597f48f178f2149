#include "host/core/fault.h"

#include <cstdio>
#include <cstdlib>

#include "host/core/activity.h"
#include "host/core/exit_status.h"
#include "host/core/trace.h"

namespace host {

void Fault(const std::string& what) {
  std::fflush(stdout);
  std::fprintf(stderr, "%sfault: %s: %s\n", IsTracing() ? "\n" : "", CurrentActivity().Describe().c_str(),
               what.c_str());
  std::fflush(nullptr);
  std::_Exit(kExitFault);
}

}  // namespace host
