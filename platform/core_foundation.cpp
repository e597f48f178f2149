#include "platform/core_foundation.h"

#if !defined(__APPLE__)

#include <utf8proc.h>

#include <algorithm>
#include <cstring>
#include <exception>
#include <string>
#include <string_view>

struct CFText {
  std::u16string units;
  mutable int references = 1;
};

namespace {

constexpr size_t kPathRoom = 4096;
constexpr char32_t kOddByte = 0xDC00;  // added to a byte that is not part of UTF-8 text

// Runs what may lack memory; null then.
template <typename Make>
CFText* OrNull(Make make) {
  try {
    return new CFText{make()};
  } catch (const std::exception&) {
    return nullptr;
  }
}

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

std::u16string FromUtf8(std::string_view text) {
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

std::u16string FormD(std::u16string_view text) {
  std::u32string points = Decompose(Decode(text));
  OrderMarks(points);
  std::u16string units;
  for (const char32_t point : points) Append(units, point);
  return units;
}

}  // namespace

CFTypeRef CFRetain(CFTypeRef object) {
  ++object->references;
  return object;
}

void CFRelease(CFTypeRef object) {
  if (--object->references == 0) delete object;
}

CFStringRef CFStringCreateWithCharacters(CFAllocatorRef, const UniChar* units, CFIndex count) {
  return OrNull([&] { return std::u16string(units, units + count); });
}

CFMutableStringRef CFStringCreateMutableCopy(CFAllocatorRef, CFIndex, CFStringRef string) {
  return OrNull([&] { return string->units; });
}

void CFStringNormalize(CFMutableStringRef string, CFStringNormalizationForm) {
  if (CFText* normalized = OrNull([&] { return FormD(string->units); })) {
    string->units.swap(normalized->units);
    CFRelease(normalized);
  }
}

CFIndex CFStringGetLength(CFStringRef string) { return static_cast<CFIndex>(string->units.size()); }

Boolean CFStringGetCString(CFStringRef string, char* buffer, CFIndex buffer_size, CFStringEncoding) {
  try {
    std::string text;
    for (const char32_t point : Decode(string->units)) {
      if (!AppendUtf8(text, point)) return false;
    }
    if (static_cast<CFIndex>(text.size()) >= buffer_size) return false;
    std::memcpy(buffer, text.c_str(), text.size() + 1);
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

CFURLRef CFURLCreateFromFSRef(CFAllocatorRef, const FSRef* reference) {
  const auto* path = reinterpret_cast<const char*>(reference);
  const size_t length = strnlen(path, kPathRoom);
  if (length == 0 || length == kPathRoom) return nullptr;
  return OrNull([&] { return FromUtf8({path, length}); });
}

CFURLRef CFURLCreateCopyAppendingPathComponent(CFAllocatorRef, CFURLRef url, CFStringRef component, Boolean) {
  return OrNull([&] { return url->units + (url->units.ends_with(u'/') ? u"" : u"/") + component->units; });
}

CFStringRef CFURLCopyFileSystemPath(CFURLRef url, CFURLPathStyle) {
  return OrNull([&] { return url->units; });
}

#endif
