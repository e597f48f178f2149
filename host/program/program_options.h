#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/host/options.h"

namespace host {

// A command line of the program.
struct ProgramOptions {
  HostOptions host;
  std::string plugin;               // a name or a path; empty: scripts may choose
  std::string script;               // file name; empty: none
  bool c_modules = false;           // scripts may load libraries of C code
  std::optional<std::string> code;  // given on the command line instead of a script
  std::vector<std::string> arguments;
  bool help = false;
  bool version = false;
};

// Throws std::invalid_argument, saying what to do instead.
ProgramOptions ParseOptions(const std::vector<std::string>& command_line);

extern const char kHelpText[];

}  // namespace host
