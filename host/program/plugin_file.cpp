#include "host/program/plugin_file.h"

#include <filesystem>

namespace host {

namespace fs = std::filesystem;

std::string LibraryFolder() {
  const fs::path program_folder = fs::read_symlink("/proc/self/exe").parent_path();
  // From the folder of installed programs to that of installed plugins.
  const fs::path installed = program_folder / GIFHOST_PLUGIN_FOLDER;
  const bool is_installed = !fs::exists(program_folder / kPluginName) && fs::exists(installed / kPluginName);
  return is_installed ? installed.lexically_normal() : program_folder;
}

std::string PluginFile(std::string_view name) {
  const fs::path folder = LibraryFolder();
  if (name.empty() || name == kDesigned) return folder / kPluginName;
  return name == kTolerant ? folder / kTolerantPluginName : fs::absolute(name);
}

std::string ScriptsFolder() {
  const fs::path program_folder = fs::read_symlink("/proc/self/exe").parent_path();
  const fs::path installed = program_folder / GIFHOST_SCRIPTS_FOLDER;
  return (fs::exists(installed) ? installed : program_folder / GIFHOST_SOURCE_SCRIPTS_FOLDER).lexically_normal();
}

}  // namespace host
