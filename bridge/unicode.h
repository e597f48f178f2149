#pragma once

// UTF-32 text as UTF-16 text, for hosts that do not take UTF-32.

#include <cstddef>
#include <cstdint>

// At most this many units come out of `length` bytes of UTF-32, the closing zero unit included.
constexpr size_t Utf16Room(size_t length) { return length / 4 * 2 + 1; }

// Writes the text at `bytes` (native byte order, a rest below 4 bytes is ignored) to `units`, which has room
// for `Utf16Room(length)`, and a zero unit after it. Returns the number of units without that zero. Lone
// surrogates are dropped; what lies beyond U+10FFFF becomes U+FFFD.
size_t Utf32ToUtf16(const char* bytes, size_t length, uint16_t* units);
