#include "host/program/commands.h"

#include <map>

namespace host {

Command FindCommand(const std::string& name) {
  static const std::map<std::string, Command> commands = {
      {"annotations", RunAnnotations},
      {"describe", RunDescribe},
      {"list", RunList},
      {"validate", RunValidate},
  };
  const auto found = commands.find(name);
  return found == commands.end() ? nullptr : found->second;
}

}  // namespace host
