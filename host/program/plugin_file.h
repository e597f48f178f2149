#pragma once

#include <string>
#include <string_view>

namespace host {

// The plugins that stand beside the program: their names for users and scripts, and their files.
constexpr std::string_view kDesigned = "designed", kTolerant = "tolerant";
constexpr const char *kPluginName = "gif_plugin.so", *kTolerantPluginName = "gif_plugin_tolerant.so";

// Where the plugin and the modules that scripts `require` lie: beside the program, else where they are installed. An
// absolute path.
std::string LibraryFolder();

// The library of a plugin: of one of these names, else of that path; empty: the designed one. An absolute path.
std::string PluginFile(std::string_view name);

// The folder of the scripts' library, from which `require "gif"` takes it.
std::string ScriptsFolder();

}  // namespace host
