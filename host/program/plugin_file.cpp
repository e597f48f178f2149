#include "host/program/plugin_file.h"

#include <filesystem>

namespace host {

namespace fs = std::filesystem;

std::string PluginFile(const ProgramOptions& options) {
  if (!options.plugin.empty()) return fs::absolute(options.plugin);
  const fs::path program_folder = fs::read_symlink("/proc/self/exe").parent_path();
  const fs::path beside = program_folder / "gif_plugin.so";
  // From the folder of installed programs to that of installed plugins.
  const fs::path installed = program_folder / GIFHOST_PLUGIN_FOLDER / "gif_plugin.so";
  return !fs::exists(beside) && fs::exists(installed) ? installed.lexically_normal() : beside;
}

}  // namespace host
