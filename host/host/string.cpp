#include "host/host/string.h"

#include <array>
#include <cstdio>
#include <string_view>

#include "host/core/text.h"

namespace host {

const std::string& String::type_name() const {
  static const std::string name = "String";
  return name;
}

std::string String::Describe() const { return Text("String#", serial(), " ", Quote(bytes_)); }

std::string Quote(std::string_view bytes) {
  constexpr size_t kShown = 40;
  std::string quoted = "\"";
  for (const char c : bytes.substr(0, kShown)) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && byte < 0x7F && c != '"' && c != '\\') {
      quoted += c;
      continue;
    }
    std::array<char, 5> escape{};
    std::snprintf(escape.data(), escape.size(), "\\x%02X", static_cast<unsigned>(byte));
    quoted += escape.data();
  }
  quoted += '"';
  return bytes.size() <= kShown ? quoted : Text(quoted, "... (", bytes.size(), " bytes)");
}

}  // namespace host
