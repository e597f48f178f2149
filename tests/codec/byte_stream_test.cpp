#include "codec/byte_stream.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

namespace {

// Writing is tested by saving.
TEST(ByteStream, PastTheEndComeZerosAndThePositionStays) {
  const uint8_t bytes[] = {7, 0, 255};
  FILE* file = std::tmpfile();
  ASSERT_NE(file, nullptr);
  std::fwrite(bytes, 1, sizeof bytes, file);
  for (size_t first = 0; first <= 8; ++first) {  // so many single bytes, then the rest at once
    std::rewind(file);
    for (MyFILE stream :
         {MyFILE{bytes, 3, 0, nullptr}, MyFILE{nullptr, 0, 0, file}, MyFILE{nullptr, 2, 0, nullptr}}) {
      const bool readable = stream.buffer || stream.file;
      std::array<uint8_t, 8> got, expected = {};
      got.fill(99);
      if (readable) std::copy(std::begin(bytes), std::end(bytes), expected.begin());
      for (size_t i = 0; i < first; ++i) got[i] = static_cast<uint8_t>(MyGetc(&stream));
      ReadBytes(&stream, got.data() + first, static_cast<int64_t>(got.size() - first));
      EXPECT_EQ(got, expected) << first;
      EXPECT_EQ(MyGetc(&stream), 0);
      EXPECT_EQ(stream.position, readable ? 3 : 0);
    }
  }
  std::fclose(file);
}

}  // namespace
