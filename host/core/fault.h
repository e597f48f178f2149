#pragma once

// Faults: a plugin broke the rules of the interface (gave up a reference too often, used a dead handle, wrote
// past its data). Nothing can be trusted afterwards, so the program stops at once.

#include <string>

namespace host {

// Says on stderr what was attempted and why it is wrong, then ends the process with kExitFault.
[[noreturn]] void Fault(const std::string& what);

}  // namespace host
