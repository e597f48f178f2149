#include "host/core/messages.h"

#include <array>
#include <cstdio>

#include "host/core/encoding.h"

namespace host {
namespace {

template <class... Numbers>
std::string Formatted(const char* format, Numbers... numbers) {
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), format, numbers...);
  return text.data();
}

bool IsControl(unsigned char byte) { return byte < 0x20 || byte == 0x7F; }

// Of UTF-8: the control characters from 80h on are C2h and their number.
std::string ShownCharacters(std::string_view text, std::string_view kept) {
  std::string shown;
  for (size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    const auto next = static_cast<unsigned char>(i + 1 < text.size() ? text[i + 1] : 0);
    if (byte == 0xC2 && next < 0xA0) {
      shown += Formatted("\\u{%X}", next);
      ++i;
    } else if (IsControl(byte) && kept.find(text[i]) == std::string_view::npos) {
      shown += Formatted("\\x%02X", byte);
    } else {
      shown += text[i];
    }
  }
  return shown;
}

}  // namespace

std::string Shown(std::string_view text, std::string_view kept) {
  std::string shown;
  while (true) {
    const size_t sound = Utf8Length(text);
    shown += ShownCharacters(text.substr(0, sound), kept);
    if (sound == text.size()) return shown;
    shown += Formatted("\\x%02X", static_cast<unsigned char>(text[sound]));
    text.remove_prefix(sound + 1);
  }
}

void Complain(std::string_view text, std::string_view kept) {
  std::fprintf(stderr, "gifhost: %s\n", Shown(text, kept).c_str());
}

}  // namespace host
