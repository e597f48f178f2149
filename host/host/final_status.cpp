#include "host/host/final_status.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "host/core/exit_status.h"
#include "host/core/messages.h"
#include "host/core/output_file.h"
#include "host/core/text.h"

namespace host {

int OutputStatus(int status) {
  int error = std::fflush(stdout) == 0 ? 0 : errno;
  if (std::ferror(stdout) == 0 || status != kExitSuccess) return status;
  if (error == 0) error = RefusedGrowth(STDOUT_FILENO);  // an earlier part was lost
  Complain(Text("standard output cannot be written", error == 0 ? "" : ": ", error == 0 ? "" : std::strerror(error)));
  return kExitFailed;
}

int FinalStatus(const Host& host, int status) {
  const int checked = OutputStatus(status);
  return host.ReportLeaks() ? checked : kExitLeak;
}

}  // namespace host
