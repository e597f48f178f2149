#include "host/core/encoding.h"

#include <iconv.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <memory>
#include <type_traits>

namespace host {
namespace {

struct Encoding {
  uint32_t code;
  const char* iconv_name;
  size_t unit_size;  // bytes of the smallest unit
};

constexpr Encoding kEncodings[] = {
    {kEncodingMacRoman, "MACINTOSH", 1}, {kEncodingUtf16, "UTF-16LE", 2}, {kEncodingWindowsLatin1, "CP1252", 1},
    {kEncodingAscii, "ASCII", 1},        {kEncodingUtf8, "UTF-8", 1},     {kEncodingUtf32, "UTF-32LE", 4},
};

const Encoding* FindEncoding(uint32_t code) {
  for (const Encoding& encoding : kEncodings) {
    if (encoding.code == code) return &encoding;
  }
  return nullptr;
}

struct CloseConverter {
  void operator()(iconv_t converter) const { iconv_close(converter); }
};
using Converter = std::unique_ptr<std::remove_pointer_t<iconv_t>, CloseConverter>;

// iconv over all of `bytes`, with question marks for what cannot be converted. False when there is no such
// conversion.
bool Convert(std::string_view bytes, const Encoding& from, const Encoding& to, std::string& out) {
  std::string question_mark(to.unit_size, '\0');
  question_mark[0] = '?';
  const iconv_t opened = iconv_open(to.iconv_name, from.iconv_name);
  if (reinterpret_cast<intptr_t>(opened) == -1) return false;
  const Converter converter(opened);
  std::string copy(bytes);
  char* in = copy.data();
  size_t in_left = copy.size();
  while (in_left > 0) {
    std::array<char, 4096> buffer{};
    char* end = buffer.data();
    size_t room = buffer.size();
    const size_t result = iconv(converter.get(), &in, &in_left, &end, &room);
    const int error = errno;
    out.append(buffer.data(), end);
    if (result != static_cast<size_t>(-1) || error == E2BIG) continue;
    out += question_mark;
    const size_t skipped = std::min(in_left, from.unit_size);
    in += skipped;
    in_left -= skipped;
    // The rest of a UTF-8 sequence belongs to the character just replaced.
    while (from.code == kEncodingUtf8 && in_left > 0 && (*in & 0xC0) == 0x80) {
      ++in;
      --in_left;
    }
  }
  return true;
}

// Bytes of the character of several that stands there, in its shortest form and no surrogate; 0 when there is none.
ptrdiff_t SequenceSize(const unsigned char* at, const unsigned char* end) {
  const unsigned lead = *at;
  const ptrdiff_t size = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || end - at < size) return 0;
  for (ptrdiff_t i = 1; i < size; ++i) {
    if ((at[i] & 0xC0) != 0x80) return 0;
  }
  const unsigned second = at[1];
  const bool overlong = (lead == 0xE0 && second < 0xA0) || (lead == 0xF0 && second < 0x90);
  const bool surrogate = lead == 0xED && second >= 0xA0;
  const bool beyond = lead == 0xF4 && second >= 0x90;
  return overlong || surrogate || beyond ? 0 : size;
}

}  // namespace

std::string ConvertEncoding(std::string_view bytes, uint32_t from, uint32_t to) {
  const Encoding* source = FindEncoding(from);
  const Encoding* target = FindEncoding(to);
  if (source == nullptr || target == nullptr || from == to) return std::string(bytes);
  std::string converted;
  return Convert(bytes, *source, *target, converted) ? converted : std::string(bytes);
}

size_t Utf8Length(std::string_view bytes) {
  const auto* begin = reinterpret_cast<const unsigned char*>(bytes.data());
  const unsigned char* end = begin + bytes.size();
  const unsigned char* at = begin;
  while (at < end) {
    if (*at < 0x80) {
      ++at;
      continue;
    }
    const ptrdiff_t size = SequenceSize(at, end);
    if (size == 0) break;
    at += size;
  }
  return static_cast<size_t>(at - begin);
}

bool IsUtf8(std::string_view bytes) { return Utf8Length(bytes) == bytes.size(); }

}  // namespace host
