#pragma once

#include <string>

#include "host/program/program_options.h"

namespace host {

// The plugin that a command line asks for: the named one, else the one beside the program, else the installed one.
// An absolute path.
std::string PluginFile(const ProgramOptions& options);

}  // namespace host
