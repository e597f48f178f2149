#pragma once

// What a plugin must bear, whatever it is a plugin for.

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "host/host/host.h"

namespace host {

// What all cases share.
struct Trial {
  std::string plugin;                // path
  uint64_t seed = 1;                 // of random calls
  std::vector<std::string> samples;  // contents of files that mean something to the plugin
};

struct Case {
  std::string name;  // "GROUP" or "GROUP.WHAT"
  HostOptions options;
  // Throws std::exception, saying what is wrong. The plugin is loaded.
  std::function<void(Host& host, const Trial& trial)> run;
  bool may_not_load = false;  // what registers cannot be understood, since part of it is withheld
};

// The cases for a host that is otherwise as `base` says.
std::vector<Case> Cases(const HostOptions& base);

}  // namespace host
