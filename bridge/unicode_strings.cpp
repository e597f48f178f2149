#include "bridge/unicode_strings.h"

#include <algorithm>
#include <memory>
#include <new>

#include "bridge/exceptions.h"
#include "bridge/strings.h"
#include "bridge/unicode.h"

static REALstringStruct* ConvertToUtf8(const StringRef& text) {
  return text ? REALConvertString(text.get(), kEncodingUtf8) : nullptr;
}

REALstringStruct* REALBuildUnicodeStringUTF16(const char* bytes, int64_t byte_length) {
  const auto length = static_cast<int32_t>(byte_length);
  if (HostIsAtLeast(2012.0)) {
    return ConvertToUtf8(StringRef::Adopt(REALBuildStringWithEncoding(bytes, length, kEncodingUtf16)));
  }
  auto text = StringRef::Adopt(REALBuildString(bytes, length));
  if (text) REALSetStringEncoding(text.get(), kEncodingUtf16);
  return ConvertToUtf8(text);
}

static REALstringStruct* BuildFromUtf32(const char* bytes, int64_t length) {
  if (HostIsAtLeast(2013.0)) {
    return ConvertToUtf8(
        StringRef::Adopt(REALBuildStringWithEncoding(bytes, static_cast<int32_t>(length), kEncodingUtf32)));
  }
  constexpr size_t kShort = 800;  // bytes below which nothing is allocated
  const auto size = static_cast<size_t>(length);
  uint16_t few[Utf16Room(kShort)];
  std::unique_ptr<uint16_t[]> many;
  if (size >= kShort) many.reset(new (std::nothrow) uint16_t[Utf16Room(size)]);
  if (size >= kShort && !many) return nullptr;
  uint16_t* units = many ? many.get() : few;
  const size_t count = Utf32ToUtf16(bytes, size, units);
  return REALBuildUnicodeStringUTF16(reinterpret_cast<const char*>(units), static_cast<int64_t>(count) * 2);
}

static bool IsAscii(const char* bytes, int64_t length) {
  return std::all_of(bytes, bytes + length, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

REALstringStruct* REALBuildUnicodeString(const char* bytes, int64_t length, TextEncoding encoding) {
  if (!bytes || length < 1 || length > INT32_MAX) return nullptr;
  try {
    switch (encoding) {
      case kEncodingUtf16:
        return REALBuildUnicodeStringUTF16(bytes, length);
      case kEncodingUtf32:
        return BuildFromUtf32(bytes, length);
      case kEncodingMacRoman:
      case kEncodingWindowsLatin1:
      case kEncodingUnknown:
        // Text that is ASCII in any of these is known to be ASCII.
        return BuildEncodedString(bytes, length, IsAscii(bytes, length) ? kEncodingAscii : encoding);
      default:
        return BuildEncodedString(bytes, length, encoding);
    }
  } catch (...) {
    RaiseCaughtException();
    return nullptr;
  }
}
