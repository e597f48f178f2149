#pragma once

#include <sstream>
#include <string>

namespace host {

// The parts written one after the other, as a stream would write them.
template <class... Parts>
std::string Text(const Parts&... parts) {
  std::ostringstream out;
  (out << ... << parts);
  return out.str();
}

}  // namespace host
