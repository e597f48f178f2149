#pragma once

#include "host/host/host.h"

namespace host {

// `status`, or kExitFailed in place of success when standard output was lost, which it says on stderr.
int OutputStatus(int status);

// The program's exit status once scripts are done: that, or kExitLeak, with a list on stderr, when something is still
// alive.
int FinalStatus(const Host& host, int status);

}  // namespace host
