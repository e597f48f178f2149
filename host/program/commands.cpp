#include "host/program/commands.h"

#include <map>
#include <vector>

#include "host/core/names.h"
#include "host/core/text.h"

namespace host {
namespace {

const std::map<std::string, Command>& Commands() {
  static const std::map<std::string, Command> commands = {
      {"annotations", RunAnnotations},
      {"describe", RunDescribe},
      {"list", RunList},
      {"validate", RunValidate},
  };
  return commands;
}

}  // namespace

Command FindCommand(const std::string& name) {
  const auto found = Commands().find(name);
  return found == Commands().end() ? nullptr : found->second;
}

std::string CommandHelp(const std::string& name) {
  const std::string_view help = kHelpText;
  const size_t begin = help.find("\n  " + name) + 1;
  size_t end = begin;
  do {
    end = help.find('\n', end) + 1;
  } while (help.substr(end).starts_with("   "));
  return Text("Usage: gifhost [OPTION...] ", help.substr(begin + 2, end - begin - 2),
              "See gifhost --help for the options.\n");
}

std::string NearestCommand(const std::string& name) {
  std::vector<std::string> names;
  for (const auto& [known, command] : Commands()) names.push_back(known);
  return NearestName(name, names);
}

}  // namespace host
