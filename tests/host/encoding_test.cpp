#include "host/encoding.h"

#include <gtest/gtest.h>

namespace host {
namespace {

using namespace std::string_literals;

TEST(Encoding, ConvertsTextAndMarksWhatCannotBeConverted) {
  const struct {
    std::string bytes;
    uint32_t from, to;
    std::string converted;
  } kCases[] = {
      {"\x8E", kEncodingMacRoman, kEncodingUtf8, "\xC3\xA9"},
      {"\x3D\xD8\x00\xDE!\0"s, kEncodingUtf16, kEncodingUtf8, "\xF0\x9F\x98\x80!"},
      {"\0\xF6\x01\0"s, kEncodingUtf32, kEncodingUtf8, "\xF0\x9F\x98\x80"},
      {"\xF0\x9F\x98\x80", kEncodingUtf8, kEncodingUtf16, "\x3D\xD8\x00\xDE"s},
      {"\x3D\xD8z\0y"s, kEncodingUtf16, kEncodingUtf8, "?z?"},  // half a pair, then half a unit
      {"\xFF\x00z"s, kEncodingUnknown, kEncodingUtf8, "\xFF\x00z"s},
      {"", kEncodingUtf8, kEncodingUtf16, ""},
  };
  for (const auto& test : kCases) {
    EXPECT_EQ(ConvertEncoding(test.bytes, test.from, test.to), test.converted)
        << std::hex << test.from << " to " << test.to;
  }
  EXPECT_EQ(ConvertEncoding(std::string(10000, '\x8E'), kEncodingMacRoman, kEncodingUtf8).size(), 20000u);
}

TEST(Encoding, KnowsUtf8) {
  EXPECT_TRUE(IsUtf8(""));
  EXPECT_TRUE(IsUtf8("\xF0\x9F\x98\x80"));
  EXPECT_FALSE(IsUtf8("GIF89a\xFF"));
  EXPECT_FALSE(IsUtf8("\xC3"));
}

}  // namespace
}  // namespace host
