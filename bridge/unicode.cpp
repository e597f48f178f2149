#include "bridge/unicode.h"

#include <cstring>

size_t Utf32ToUtf16(const char* bytes, size_t length, uint16_t* units) {
  uint16_t* next = units;
  for (size_t i = 0; i < length / 4; ++i) {
    uint32_t c;
    std::memcpy(&c, bytes + i * 4, 4);
    if (c >= 0xD800 && c <= 0xDFFF) continue;
    if (c < 0x10000) {
      *next++ = static_cast<uint16_t>(c);
    } else if (c <= 0x10FFFF) {
      *next++ = static_cast<uint16_t>(0xD800 + ((c - 0x10000) >> 10));
      *next++ = static_cast<uint16_t>(0xDC00 + ((c - 0x10000) & 0x3FF));
    } else {
      *next++ = 0xFFFD;
    }
  }
  *next = 0;
  return static_cast<size_t>(next - units);
}
