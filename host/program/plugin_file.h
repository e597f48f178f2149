#pragma once

#include <string>

#include "host/program/program_options.h"

namespace host {

constexpr const char* kPluginName = "gif_plugin.so";

// Where the plugin and the modules that scripts `require` lie: beside the program, else where they are installed. An
// absolute path.
std::string LibraryFolder();

// The plugin that a command line asks for: the named one, else the one in that folder. An absolute path.
std::string PluginFile(const ProgramOptions& options);

// The folder of the scripts' library, from which `require "gif"` takes it.
std::string ScriptsFolder();

}  // namespace host
