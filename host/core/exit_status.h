#pragma once

namespace host {

// The program's exit statuses.
constexpr int kExitSuccess = 0;
constexpr int kExitFailed = 1;  // the script or the command failed, or its output was lost
constexpr int kExitUsage = 2;   // the command line asks for what there is not
constexpr int kExitFault = 70;  // the plugin broke a rule
constexpr int kExitLeak = 71;   // something was still alive at the end

}  // namespace host
