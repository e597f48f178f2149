#pragma once

#include "host/lua/script.h"

namespace host {

// Reads lines from the terminal and runs them until the end of input; what a line gives is printed.
void RunPrompt(Script& script);

}  // namespace host
