#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "host/host/host.h"

namespace host {

// Which plugin a host gets, and loading it when it is first used: until then a script may still say which one it
// wants.
class PluginChoice {
 public:
  // The library of a name, a path.
  using Finder = std::function<std::string(std::string_view name)>;

  PluginChoice(Host& host, Finder find) : host_(host), find_(std::move(find)) {}

  // The user's choice, which holds whatever scripts say.
  void Fix(std::string_view name);

  // A script's choice, the last of which counts. Throws UsageError when another plugin is loaded: a process has one.
  void Choose(std::string_view name);

  // Empty until there is one.
  const std::string& chosen() const { return chosen_; }

  // Loads what is chosen, else `fallback`; the first time only. Throws as Host::LoadPlugin() does.
  void Load(std::string_view fallback = "designed");

  int32_t version() const { return host_.plugin_version(); }

  // Whether loading found an option that it could make nothing of.
  bool was_misused() const { return was_misused_; }

 private:
  Host& host_;
  Finder find_;
  std::string chosen_;
  bool is_fixed_ = false;
  bool is_loaded_ = false;
  bool was_misused_ = false;
};

}  // namespace host
