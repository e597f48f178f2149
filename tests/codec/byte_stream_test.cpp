#include "codec/byte_stream.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

namespace {

// What a source gives: byte by byte, and in pieces.
struct Case {
  const char* name;
  std::vector<uint8_t> bytes;
  bool null_buffer;
};

const Case kCases[] = {
    {"three bytes", {7, 0, 255}, false},
    {"no bytes", {}, false},
    {"no buffer", {1, 2}, true},
};

TEST(ByteStream, PastTheEndComeZerosAndThePositionStays) {
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.name);
    const uint8_t* buffer = c.null_buffer ? nullptr : c.bytes.data();
    const size_t readable = c.null_buffer ? 0 : c.bytes.size();
    FILE* file = std::tmpfile();
    ASSERT_NE(file, nullptr);
    for (size_t i = 0; i < readable; ++i) std::fputc(c.bytes[i], file);

    std::vector<uint8_t> expected(c.bytes.begin(), c.bytes.begin() + static_cast<std::ptrdiff_t>(readable));
    expected.resize(8);
    for (size_t first = 0; first <= expected.size(); ++first) {  // so many single bytes, then the rest at once
      std::rewind(file);
      const auto size = static_cast<int64_t>(c.bytes.size());
      for (MyFILE stream : {MyFILE{buffer, size, 0, nullptr}, MyFILE{nullptr, 0, 0, file}}) {
        std::vector<uint8_t> got(expected.size(), 99);
        for (size_t i = 0; i < first; ++i) got[i] = static_cast<uint8_t>(MyGetc(&stream));
        ReadBytes(&stream, got.data() + first, static_cast<int64_t>(got.size() - first));
        EXPECT_EQ(got, expected) << first;
        EXPECT_EQ(MyGetc(&stream), 0);
        EXPECT_EQ(stream.position, static_cast<int64_t>(readable));
      }
    }
    std::fclose(file);
  }
}

TEST(ByteStream, WritesTheLowEightBitsToFilesOnly) {
  FILE* file = std::tmpfile();
  ASSERT_NE(file, nullptr);
  uint8_t memory[] = {1, 2};
  MyFILE streams[] = {{nullptr, 0, 0, file}, {memory, 2, 0, nullptr}};
  for (MyFILE& stream : streams) {
    MyPutc(&stream, 0x1FE);
    const uint8_t more[] = {5, 6};
    WriteBytes(&stream, more, 2);
    MyPutc(&stream, -1);
  }
  EXPECT_EQ(memory[0], 1);
  EXPECT_EQ(streams[1].position, 0);
  std::rewind(file);
  std::array<uint8_t, 8> written{};
  EXPECT_EQ(std::fread(written.data(), 1, written.size(), file), 4U);
  EXPECT_EQ(written, (std::array<uint8_t, 8>{0xFE, 5, 6, 0xFF}));
  std::fclose(file);
}

}  // namespace
