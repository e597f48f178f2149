// Names are bytes: UTF-8 by custom, anything by right.

#include <utf8proc.h>

#include <algorithm>

#include "platform/names.h"

namespace {

constexpr char32_t kOddByte = 0xDC00;  // added to a byte that is not part of UTF-8 text

bool IsHighSurrogate(char32_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
bool IsLowSurrogate(char32_t unit) { return unit >= 0xDC00 && unit < 0xE000; }
bool IsOddByte(char32_t point) { return point >= kOddByte + 0x80 && point <= kOddByte + 0xFF; }

// Code points, lone surrogates among them as they stand.
std::u32string Decode(std::u16string_view units) {
  std::u32string points;
  for (size_t i = 0; i < units.size(); ++i) {
    char32_t point = units[i];
    if (IsHighSurrogate(point) && i + 1 < units.size() && IsLowSurrogate(units[i + 1])) {
      point = 0x10000 + ((point - 0xD800) << 10) + (units[++i] - 0xDC00U);
    }
    points.push_back(point);
  }
  return points;
}

void Append(std::u16string& units, char32_t point) {
  if (point >= 0x10000) {
    units.push_back(static_cast<char16_t>(0xD800 + ((point - 0x10000) >> 10)));
    point = 0xDC00 + (point & 0x3FF);
  }
  units.push_back(static_cast<char16_t>(point));
}

// False when there is no UTF-8 for it.
bool AppendUtf8(std::string& text, char32_t point) {
  if (IsOddByte(point)) {
    text.push_back(static_cast<char>(point - kOddByte));
    return true;
  }
  if (point == 0 || IsHighSurrogate(point) || IsLowSurrogate(point)) return false;
  utf8proc_uint8_t bytes[4];
  const utf8proc_ssize_t length = utf8proc_encode_char(static_cast<utf8proc_int32_t>(point), bytes);
  text.append(reinterpret_cast<const char*>(bytes), static_cast<size_t>(length));
  return true;
}

int CombiningClass(char32_t point) {
  return utf8proc_get_property(static_cast<utf8proc_int32_t>(point))->combining_class;
}

std::u32string Decompose(const std::u32string& points) {
  std::u32string parts;
  for (const char32_t point : points) {
    utf8proc_int32_t few[8];
    int boundary = 0;
    const utf8proc_ssize_t count =
        utf8proc_decompose_char(static_cast<utf8proc_int32_t>(point), few, 8, UTF8PROC_DECOMPOSE, &boundary);
    parts.append(few, few + std::clamp<utf8proc_ssize_t>(count, 0, 8));
  }
  return parts;
}

// Marks that follow the same base character stand in the order of their combining classes.
void OrderMarks(std::u32string& points) {
  for (auto mark = points.begin(); mark != points.end();) {
    const auto is_base = [](char32_t point) { return CombiningClass(point) == 0; };
    mark = std::find_if_not(mark, points.end(), is_base);
    const auto end = std::find_if(mark, points.end(), is_base);
    std::stable_sort(mark, end, [](char32_t a, char32_t b) { return CombiningClass(a) < CombiningClass(b); });
    mark = end;
  }
}

}  // namespace

std::optional<std::u16string> Utf16Name(std::string_view text) {
  std::u16string units;
  const auto* byte = reinterpret_cast<const utf8proc_uint8_t*>(text.data());
  for (auto left = static_cast<utf8proc_ssize_t>(text.size()); left > 0;) {
    utf8proc_int32_t point = 0;
    utf8proc_ssize_t length = utf8proc_iterate(byte, left, &point);
    if (length < 1) {
      length = 1;
      point = static_cast<utf8proc_int32_t>(kOddByte + *byte);
    }
    Append(units, static_cast<char32_t>(point));
    byte += length;
    left -= length;
  }
  return units;
}

std::optional<std::string> Utf8Name(std::u16string_view units) {
  std::string text;
  for (const char32_t point : Decode(units)) {
    if (!AppendUtf8(text, point)) return std::nullopt;
  }
  return text;
}

std::u16string FormD(std::u16string_view name) {
  std::u32string points = Decompose(Decode(name));
  OrderMarks(points);
  std::u16string units;
  for (const char32_t point : points) Append(units, point);
  return units;
}
