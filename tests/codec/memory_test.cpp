// Each allocation of a read fails once, in order, and so does the writer's: what is left must be a document, and
// everything is released. Documents are told by what the writer makes of them.

#include <gtest/gtest.h>

#include <string>

#include "codec/reader.h"
#include "codec/writer.h"
#include "tests/support/failing_allocation.h"

namespace {

using namespace std::string_literals;

void Read(const std::string& file, Gif* gif) {
  MyFILE stream{reinterpret_cast<const uint8_t*>(file.data()), static_cast<int64_t>(file.size()), 0, nullptr};
  ReadGif(&stream, gif);
}

std::string Written(const Gif* gif) {
  char bytes[200];
  MyFILE stream = {nullptr, 0, 0, fmemopen(bytes, sizeof bytes, "wb")};
  std::setvbuf(stream.file, nullptr, _IONBF, 0);
  WriteGif(&stream, gif);
  const auto size = static_cast<size_t>(std::ftell(stream.file));
  std::fclose(stream.file);
  return {bytes, size};
}

const std::string kStart = "GIF89a\1\0\1\0\x80\0\0"s, kTable = kStart + "nine 9", kEnd = "\x3B";
const std::string kFirst = "!\1\1;\1;\0"s;  // sub-blocks that, left unread, read as the trailer
const std::string kDescriptor = ",\4\1\5\0\5\0\1\0\x80rgbRGB\2"s, kImage = kDescriptor + "\3\x0C\x3C\5\0"s;
const std::string kLast = "!\2\0"s;

TEST(Memory, ReadsGoOnWithout) {
  const std::string all = kTable + kFirst + kImage + kLast;
  const struct {
    const char* failing;
    std::string left;
  } cases[] = {
      {"global colours", kStart + kFirst + kImage + kLast},
      {"block", kTable},
      {"extension", kTable + "!" + kImage + kLast},
      {"sub-block", kTable + "!\1\0"s},
      {"its bytes", kTable + "!\1\0"s},
      {"list of sub-blocks", kTable + "!\1\0"s + kImage + kLast},
      {"second sub-block", kTable + "!\1\1;\0"s},
      {"its bytes", kTable + "!\1\1;\0"s},
      {"list of sub-blocks", kTable + "!\1\0"s + kImage + kLast},
      {"list of blocks", kTable + kImage + kLast},
      {"block", kTable + kFirst},
      {"picture", kTable + kFirst + "," + kLast},
      {"its palette", kTable + kFirst + "," + kLast},
      {"local colours", kTable + kFirst + "," + kLast},
      {"rows", kTable + kFirst + "," + kLast},
      {"pixels", kTable + kFirst + "," + kLast},
      {"list of blocks", kTable + kLast},
      {"block", kTable + kFirst + kImage},
      {"extension", kTable + kFirst + kImage + "!"},
      {"list of blocks", kTable},
      {"block of the trailer", all},
      {"none", all},
  };
  int64_t n = 0;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.failing);
    Gif* gif = NewGif();
    FailAllocation(++n);
    Read(all + kEnd, gif);
    EXPECT_EQ(AllocationFailed(), &c != std::end(cases) - 1);
    FailAllocation(n, Failing::kFromThenOn);  // and from there on: no more than no fault
    Gif* starved = NewGif();
    if (starved) Read(all + kEnd, starved);
    FailAllocation(0);
    EXPECT_EQ(Written(gif), c.left + kEnd);
    DeleteGif(gif);
    DeleteGif(starved);
  }
}

// The image has its code size and no data, so that what follows stays readable.
TEST(Memory, WritesLeaveOutPixels) {
  Gif* gif = NewGif();
  Read(kTable + kImage + kLast, gif);
  FailAllocation(1, Failing::kFromThenOn);
  EXPECT_EQ(Written(gif), kTable + kDescriptor + "\0"s + kLast + kEnd);
  FailAllocation(0);
  DeleteGif(gif);
}

}  // namespace
