#include "host/core/fault.h"

#include <cstdio>
#include <cstdlib>

#include "host/core/activity.h"
#include "host/core/exit_status.h"
#include "host/core/messages.h"
#include "host/core/trace.h"
#include "host/core/unfinished_files.h"

namespace host {

void Fault(const std::string& what) {
  std::fflush(stdout);
  const std::string shown = Shown(CurrentActivity().Describe() + ": " + what);
  std::fprintf(stderr, "%sfault: %s\n", IsTracing() ? "\n" : "", shown.c_str());
  RemoveUnfinished();
  std::fflush(nullptr);
  std::_Exit(kExitFault);
}

}  // namespace host
