#include "host/core/encoding.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>

using namespace std::string_literals;

namespace host {

static std::string Utf16(std::initializer_list<uint16_t> units) {
  return {reinterpret_cast<const char*>(units.begin()), units.size() * sizeof(uint16_t)};
}

TEST(Encoding, MarksWhatCannotBeConverted) {
  const struct {
    std::string bytes;
    uint32_t from, to;
    std::string converted;
  } rows[] = {{"\x8E", kEncodingMacRoman, kEncodingUtf8, "\xC3\xA9"},
              {"\xF0\x9F\x98\x80", kEncodingUtf8, kEncodingUtf16, Utf16({0xD83D, 0xDE00})},
              {Utf16({0xD83D, 'z'}) + "y", kEncodingUtf16, kEncodingUtf8, "?z?"},  // half a pair, half a unit
              {"\xFFz", kEncodingUnknown, kEncodingUtf8, "\xFFz"},
              {std::string(10000, '\x81'), kEncodingWindowsLatin1, kEncodingUtf8, std::string(10000, '?')}};
  for (const auto& row : rows) EXPECT_EQ(ConvertEncoding(row.bytes, row.from, row.to), row.converted);
}

TEST(Encoding, KnowsUtf8) {
  const struct {
    std::string bytes;
    bool is_utf8;
  } rows[] = {
      {"", true},
      {"a\0z"s, true},
      {"\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", true},  // each length's ends
      {"GIF89a\xFF", false},
      {"\x80", false},              // a rest alone
      {"\xC3", false},              // cut short
      {"\xF0\x9F\x98", false},      // the same
      {"\xC1\xBF", false},          // longer than need be
      {"\xE0\x9F\xBF", false},      // the same
      {"\xF0\x8F\xBF\xBF", false},  // the same
      {"\xED\xA0\x80", false},      // half of a pair
      {"\xF4\x90\x80\x80", false},  // beyond the last character
  };
  for (const auto& row : rows) EXPECT_EQ(IsUtf8(row.bytes), row.is_utf8) << testing::PrintToString(row.bytes);
}

}  // namespace host
