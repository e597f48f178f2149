#pragma once

// Text encodings by their 32-bit codes, and conversion between them.

#include <cstdint>
#include <string>
#include <string_view>

namespace host {

constexpr uint32_t kEncodingMacRoman = 0;
constexpr uint32_t kEncodingUtf16 = 0x100;  // native byte order
constexpr uint32_t kEncodingWindowsLatin1 = 0x500;
constexpr uint32_t kEncodingAscii = 0x600;
constexpr uint32_t kEncodingUnknown = 0xFFFF;  // bytes of no known text encoding
constexpr uint32_t kEncodingUtf8 = 0x8000100;
constexpr uint32_t kEncodingUtf32 = 0xC000100;  // native byte order

// `bytes` in the other encoding. A character that the target lacks, or bytes that are no character, become
// "?". Where either code is unknown the bytes stay as they are.
std::string ConvertEncoding(std::string_view bytes, uint32_t from, uint32_t to);

bool IsUtf8(std::string_view bytes);

// How many bytes from the first on are UTF-8.
size_t Utf8Length(std::string_view bytes);

}  // namespace host
