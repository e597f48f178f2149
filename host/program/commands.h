#pragma once

// The program's commands: words that stand where a script's name would.

#include <string>

#include "host/program/program_options.h"

namespace host {

// Runs with options.arguments and gives the program's exit status. Throws std::invalid_argument for arguments that it
// does not take.
using Command = int (*)(const ProgramOptions& options);

// Null when there is no command of that name.
Command FindCommand(const std::string& name);

// What --help says of it.
std::string CommandHelp(const std::string& name);

// The one that a misspelt name most likely meant; empty when none comes close.
std::string NearestCommand(const std::string& name);

int RunList(const ProgramOptions& options);         // list [--json]
int RunDescribe(const ProgramOptions& options);     // describe [--json] [CLASS]
int RunAnnotations(const ProgramOptions& options);  // annotations
int RunValidate(const ProgramOptions& options);     // validate [OPTION...]

}  // namespace host
