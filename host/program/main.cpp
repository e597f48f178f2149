// The program: gifhost [OPTION...] [SCRIPT or COMMAND [ARGUMENT...]]

#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <exception>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/classes/full_host.h"
#include "host/core/exit_status.h"
#include "host/core/messages.h"
#include "host/host/final_status.h"
#include "host/lua/lua_plugin.h"
#include "host/lua/script.h"
#include "host/program/commands.h"
#include "host/program/plugin_file.h"
#include "host/program/program_options.h"
#include "host/program/prompt.h"

namespace {

// What whoever named that script may have meant: a command, or a file for a script to read.
std::string Hint(const std::string& script) {
  std::ifstream file(script, std::ios::binary);
  const std::string command = file ? "" : host::NearestCommand(script);
  if (!command.empty()) return "; did you mean the command \"" + command + "\"?";
  std::array<char, 64> begin{};
  const auto count = file.read(begin.data(), begin.size()).gcount();
  const bool is_binary = std::any_of(begin.begin(), begin.begin() + count, [](unsigned char c) { return c < '\t'; });
  return is_binary ? "; it is no script: what a script reads stands behind the script's name" : "";
}

bool RunScript(host::Host& host, host::PluginChoice* plugin, const host::ProgramOptions& options) {
  host::Script script(host, options.script.empty() ? "gifhost" : options.script, options.arguments,
                      options.c_modules);
  host::SetPlugin(script.lua(), plugin);
  script.FindModulesIn(host::LibraryFolder());
  script.AddLibrary(host::ScriptsFolder());
  bool succeeded = true;
  if (options.code) {
    succeeded = script.RunCode(*options.code, "=-e");
  } else if (!options.script.empty()) {
    succeeded = script.RunFile(options.script == "-" ? "" : options.script);
  } else if (isatty(STDIN_FILENO) != 0) {
    host::RunPrompt(script);
  } else {
    succeeded = script.RunFile("");
  }
  std::fflush(stdout);
  const bool has_file = !options.code && !options.script.empty() && options.script != "-";
  if (!succeeded) host::Complain(script.error() + (has_file ? Hint(options.script) : ""), "\n\t");
  return succeeded;
}

int Run(const host::ProgramOptions& options) {
  if (const host::Command command = options.code ? nullptr : host::FindCommand(options.script)) {
    if (std::find(options.arguments.begin(), options.arguments.end(), "--help") != options.arguments.end()) {
      std::fputs(host::CommandHelp(options.script).c_str(), stdout);
      return host::OutputStatus(host::kExitSuccess);
    }
    return host::OutputStatus(command(options));
  }
  host::FullHost host(options.host);
  host::PluginChoice plugin(host, host::PluginFile);
  if (!options.plugin.empty()) {
    plugin.Fix(options.plugin);
    plugin.Load();
  }
  const bool succeeded = RunScript(host, &plugin, options);
  if (succeeded && !options.host.without.empty()) plugin.Load();  // a name that hides nothing is told in any case
  const int failed = plugin.was_misused() ? host::kExitUsage : host::kExitFailed;
  return host::FinalStatus(host, succeeded ? host::kExitSuccess : failed);
}

}  // namespace

int main(int argc, char** argv) {
  std::signal(SIGXFSZ, SIG_IGN);  // a file that grows too long is refused like any other
  host::ProgramOptions options;
  try {
    options = host::ParseOptions(std::vector<std::string>(argv + 1, argv + argc));
  } catch (const std::invalid_argument& error) {
    host::Complain(error.what());
    return host::kExitUsage;
  }
  if (options.help || options.version) {
    std::fputs(options.help ? host::kHelpText : "gifhost " GIFHOST_VERSION "\n", stdout);
    return host::kExitSuccess;
  }
  try {
    return Run(options);
  } catch (const std::invalid_argument& error) {
    host::Complain(error.what());
    return host::kExitUsage;
  } catch (const std::exception& error) {
    host::Complain(error.what());
    return host::kExitFailed;
  }
}
