#include "scan/code_walk.h"

#include <gtest/gtest.h>

#include "tests/oracle/slow_decoder.h"
#include "tests/support/code_streams.h"

namespace {

constexpr int64_t kNoEnd = INT64_MAX;  // an image that takes all pixels

// In pieces that differ in size.
CodeWalk Walk(const Bytes& data, int32_t code_size, int64_t area) {
  CodeWalker walker(code_size, area);
  for (size_t at = 0, piece = 1; at < data.size(); at += piece, piece = piece % kMaxSubBlock + 1) {
    walker.Add(&data[at], static_cast<int64_t>(std::min(piece, data.size() - at)));
  }
  return walker.Finish();
}

TEST(CodeWalk, CountsKnownCodes) {
  constexpr int32_t kClear = 4, kEnd = 5;  // with a minimum code size of 2
  struct Case {
    const char* name;
    std::vector<int32_t> codes;
    int64_t area;
    CodeWalk expected;  // ended_at in codes of 3 bits
  };
  const Case cases[] = {
      {"nothing", {}, 4, {0, 0, 0, -1, WalkEnd::kDataEnds, 0, -1, 0, -1}},
      {"sound", {kClear, 1, 6, kEnd}, 3, {4, 1, 3, 1, WalkEnd::kEndCode, 3, -1, 0, -1}},
      {"cleared again", {kClear, 1, kClear, 2, kEnd}, 2, {5, 2, 2, 2, WalkEnd::kEndCode, 4, -1, 0, -1}},
      {"undefined", {kClear, 1, 7, 3}, 9, {3, 1, 1, 1, WalkEnd::kUndefinedCode, 2, -1, 0, -1}},
      {"undefined at once", {6}, 9, {1, 0, 0, -1, WalkEnd::kUndefinedCode, 0, -1, 0, -1}},
      {"a pixel too many, of another colour", {0, 6, 3, kEnd}, 3, {4, 0, 4, 0, WalkEnd::kEndCode, 3, -1, 0, 2}},
      {"a string too long", {0, 6, kEnd}, 2, {3, 0, 3, 0, WalkEnd::kEndCode, 2, -1, 0, 1}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    CodePacker packer(2);
    for (const int32_t code : c.codes) packer.Add(code);
    const CodeWalk walk = Walk(packer.Finish(), 2, c.area);
    EXPECT_EQ(walk.codes, c.expected.codes);
    EXPECT_EQ(walk.clear_codes, c.expected.clear_codes);
    EXPECT_EQ(walk.pixels, c.expected.pixels);
    EXPECT_EQ(walk.highest, c.expected.highest);
    EXPECT_EQ(walk.end, c.expected.end);
    EXPECT_EQ(walk.ended_at, c.expected.ended_at * 3);
    EXPECT_EQ(walk.over_at, c.expected.over_at < 0 ? -1 : c.expected.over_at * 3);
  }
}

// The table is full with the 4092nd code after the first: entries 6 to 4095 of minimum code size 2 are 4090.
TEST(CodeWalk, CountsOnWithAFullTable) {
  constexpr int64_t kFirstAfter = 4091;
  CodePacker packer(2);
  for (int64_t i = 0; i < kFirstAfter + 10; ++i) packer.Add(3);
  const Bytes data = packer.Finish();
  const CodeWalk walk = Walk(data, 2, kFirstAfter + 10);
  EXPECT_EQ(walk.pixels, kFirstAfter + 10);
  EXPECT_EQ(walk.full_pixels, kFirstAfter);
  EXPECT_EQ(walk.full_at, walk.ended_at - 10 * 12);
  EXPECT_EQ(Walk(data, 2, kFirstAfter).full_at, -1);  // a full image wants no more
}

// The sub-blocks' bytes without their framing.
Bytes Joined(const Bytes& file, size_t at) {
  Bytes data;
  while (at < file.size() && file[at] != 0) {
    const size_t end = std::min(at + 1 + file[at], file.size());
    data.insert(data.end(), &file[at] + 1, file.data() + end);
    at = end;
  }
  return data;
}

// Decodes the pixels that a walk has counted, in one line, and finds out why there are no more.
class Judge {
 public:
  Judge(const Bytes& data, int32_t code_size) {
    for (size_t at = 0; at < data.size(); at += 255) {
      const size_t length = std::min<size_t>(255, data.size() - at);
      framed_.push_back(static_cast<uint8_t>(length));
      framed_.insert(framed_.end(), data.begin() + static_cast<std::ptrdiff_t>(at),
                     data.begin() + static_cast<std::ptrdiff_t>(at + length));
    }
    framed_.push_back(0);
    stream_ = {framed_.data(), static_cast<int64_t>(framed_.size()), 0, nullptr};
    decoder_.events = {};
    oracle::SetUp(&decoder_, code_size);
  }

  Bytes Line(int64_t pixels) {
    Bytes line(static_cast<size_t>(pixels) + 1);
    oracle::ReadGifLine(&stream_, &decoder_, line.data(), static_cast<int>(pixels));
    line.pop_back();
    return line;
  }
  int64_t Faults() const {
    const auto& events = decoder_.events;
    return events[oracle::kEndOneShort] + events[oracle::kEndEarly] + events[oracle::kUndefinedCode] +
           events[oracle::kUndefinedLink];
  }
  const oracle::GifDecoder& decoder() const { return decoder_; }

 private:
  Bytes framed_;
  MyFILE stream_{};
  inline static oracle::GifDecoder decoder_;
};

TEST(CodeWalk, AgreesWithTheOracleOnRandomAndDamagedStreams) {
  constexpr int kStreams = 20000;
  StreamMaker maker(20240301);
  std::array<int, 3> ends{};
  int full = 0;
  for (int i = 0; i < kStreams; ++i) {
    SCOPED_TRACE(i);
    const StreamMaker::Made made = maker.Make();
    const int32_t code_size = made.file[made.data - 1];
    const Bytes data = Joined(made.file, made.data);
    const CodeWalk walk = Walk(data, code_size, kNoEnd);

    Judge judge(data, code_size);
    const Bytes pixels = judge.Line(walk.pixels);
    ASSERT_EQ(judge.Faults(), 0);
    ASSERT_EQ(judge.decoder().stack_depth, 0);
    if (code_size <= 8) {
      ASSERT_EQ(walk.highest, pixels.empty() ? -1 : *std::max_element(pixels.begin(), pixels.end()));
    }
    ASSERT_EQ(walk.full_at >= 0, judge.decoder().events[oracle::kTableFull] > 0);

    ASSERT_EQ(judge.decoder().data_ended, 0);
    if (walk.end == WalkEnd::kDataEnds) {
      judge.Line(1);
      ASSERT_EQ(judge.decoder().data_ended, 1);  // the next code is not there as a whole
    } else {
      judge.Line(2);  // with one pixel missing an end code would do
      ASSERT_EQ(judge.decoder().events[walk.end == WalkEnd::kEndCode ? oracle::kEndEarly : oracle::kUndefinedCode],
                1);
    }
    ends[static_cast<size_t>(walk.end)]++;
    full += walk.full_at >= 0;

    // Where the image ends makes no difference to the count, only to what is said of it.
    const CodeWalk limited = Walk(data, code_size, walk.pixels / 2);
    ASSERT_EQ(limited.pixels, walk.pixels);
    ASSERT_EQ(limited.codes, walk.codes);
    ASSERT_EQ(limited.over_at >= 0, walk.pixels > walk.pixels / 2);
    ASSERT_LE(limited.highest, walk.highest);
  }
  for (const int count : ends) EXPECT_GT(count, kStreams / 100);
  EXPECT_GT(full, kStreams / 2000);
}

}  // namespace
