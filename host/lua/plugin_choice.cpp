#include "host/lua/plugin_choice.h"

#include <stdexcept>

#include "host/core/text.h"

namespace host {

void PluginChoice::Fix(std::string_view name) {
  chosen_ = name;
  is_fixed_ = true;
}

void PluginChoice::Choose(std::string_view name) {
  if (is_fixed_) return;
  if (is_loaded_ && chosen_ != name) {
    throw UsageError(Text("a process has one plugin: \"", chosen_, "\" is in use, \"", name, "\" can't be"));
  }
  chosen_ = name;
}

void PluginChoice::Load(std::string_view fallback) {
  if (is_loaded_) return;
  is_loaded_ = true;  // also when it fails: what has been registered by then stays
  if (chosen_.empty()) chosen_ = fallback;
  try {
    host_.LoadPlugin(find_(chosen_));
  } catch (const std::invalid_argument&) {
    was_misused_ = true;
    throw;
  }
}

}  // namespace host
