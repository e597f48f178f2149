#include "host/core/encoding.h"

#include <iconv.h>

#include <array>
#include <cerrno>
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

// iconv over all of `bytes`. At a character that cannot be converted `replace` says what to write instead.
template <class Replace>
bool Convert(std::string_view bytes, const Encoding& from, const Encoding& to, std::string& out, Replace replace) {
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
    if (!replace(out)) return false;
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

}  // namespace

std::string ConvertEncoding(std::string_view bytes, uint32_t from, uint32_t to) {
  const Encoding* source = FindEncoding(from);
  const Encoding* target = FindEncoding(to);
  if (source == nullptr || target == nullptr || from == to) return std::string(bytes);
  std::string question_mark(target->unit_size, '\0');
  question_mark[0] = '?';
  std::string converted;
  const auto replace = [&](std::string& out) {
    out += question_mark;
    return true;
  };
  return Convert(bytes, *source, *target, converted, replace) ? converted : std::string(bytes);
}

bool IsUtf8(std::string_view bytes) {
  // UTF-16 has no place for what lies beyond the last character; UTF-8's own converter lets it pass.
  const Encoding &utf8 = *FindEncoding(kEncodingUtf8), &utf16 = *FindEncoding(kEncodingUtf16);
  std::string ignored;
  return Convert(bytes, utf8, utf16, ignored, [](std::string&) { return false; });
}

}  // namespace host
