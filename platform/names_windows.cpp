// The system's own conversions. Its names are UTF-16: there are no odd bytes to keep.

#define WIN32_LEAN_AND_MEAN
#define NOMINMAX
#include <windows.h>

#include "platform/names.h"

namespace {

const wchar_t* Wide(const char16_t* units) { return reinterpret_cast<const wchar_t*>(units); }
wchar_t* Wide(char16_t* units) { return reinterpret_cast<wchar_t*>(units); }

}  // namespace

std::optional<std::u16string> Utf16Name(std::string_view text) {
  if (text.empty()) return std::u16string();
  const auto length = static_cast<int>(text.size());
  std::u16string units(text.size(), u'\0');
  const int count =
      MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(), length, Wide(units.data()), length);
  if (count == 0) return std::nullopt;
  units.resize(static_cast<size_t>(count));
  return units;
}

std::optional<std::string> Utf8Name(std::u16string_view units) {
  if (units.find(u'\0') != units.npos) return std::nullopt;
  if (units.empty()) return std::string();
  std::string text(units.size() * 3, '\0');
  const int count =
      WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, Wide(units.data()), static_cast<int>(units.size()),
                          text.data(), static_cast<int>(text.size()), nullptr, nullptr);
  if (count == 0) return std::nullopt;
  text.resize(static_cast<size_t>(count));
  return text;
}

// Room for the longest decomposition; what the system cannot normalise stays as it is.
std::u16string FormD(std::u16string_view units) {
  constexpr size_t kLongest = 4;
  if (units.empty()) return {};
  std::u16string normalized(units.size() * kLongest + 1, u'\0');
  const int count = NormalizeString(NormalizationD, Wide(units.data()), static_cast<int>(units.size()),
                                    Wide(normalized.data()), static_cast<int>(normalized.size()));
  if (count <= 0) return std::u16string(units);
  normalized.resize(static_cast<size_t>(count));
  return normalized;
}
