#pragma once

#include <string>
#include <string_view>

#include "host/host/errors.h"

namespace host {

// Throws UsageError for a path with a zero byte: the system would take what stands in front of it for the name.
inline void RequirePath(std::string_view path) {
  const size_t zero = path.find('\0');
  if (zero != std::string_view::npos) {
    throw UsageError("a path can't hold a zero byte: \"" + std::string(path.substr(0, zero)) + "\\0...\"");
  }
}

}  // namespace host
