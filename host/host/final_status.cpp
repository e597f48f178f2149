#include "host/host/final_status.h"

#include <cstdio>

#include "host/core/exit_status.h"

namespace host {

int OutputStatus(int status) {
  const bool lost = std::fflush(stdout) != 0 || std::ferror(stdout) != 0;
  if (!lost || status != kExitSuccess) return status;
  std::fprintf(stderr, "gifhost: standard output cannot be written\n");
  return kExitFailed;
}

int FinalStatus(const Host& host, int status) {
  const int checked = OutputStatus(status);
  return host.ReportLeaks() ? checked : kExitLeak;
}

}  // namespace host
