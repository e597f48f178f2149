// What the encoder writes byte by byte, and what it ignores.

#include "codec/lzw_encoder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "tests/oracle/slow_encoder.h"

namespace {

using Bytes = std::vector<uint8_t>;

// What a user of an encoder writes.
template <typename Use>
Bytes Written(int code_size, Use use, int64_t most_pixels = INT64_MAX) {
  char* bytes = nullptr;
  size_t size = 0;
  MyFILE stream = {nullptr, 0, 0, open_memstream(&bytes, &size)};
  // No more than it asks for, and not zero.
  const size_t room = EncoderSize(most_pixels), guard = 100000;
  const auto memory = std::make_unique_for_overwrite<char[]>(room + guard);
  std::fill_n(memory.get(), room + guard, '\xAA');
  auto* encoder = reinterpret_cast<GifEncoder*>(memory.get());
  StartGifEncoder(encoder, code_size, most_pixels);
  use(&stream, encoder);
  std::fclose(stream.file);
  EXPECT_TRUE(std::all_of(memory.get() + room, memory.get() + room + guard, [](char c) { return c == '\xAA'; }));
  Bytes written(bytes, bytes + size);
  std::free(bytes);
  return written;
}

void WriteImage(MyFILE* stream, GifEncoder* encoder, const Bytes& pixels) {
  WriteGifCode(stream, encoder, encoder->strings.clear_code);
  WriteGifLine(stream, encoder, pixels.data(), static_cast<int>(pixels.size()));
  if (encoder->strings.prefix_code != kNoPrefix) WriteGifCode(stream, encoder, encoder->strings.prefix_code);
  WriteGifCode(stream, encoder, encoder->strings.end_code);
  WriteGifCode(stream, encoder, kFlush);
}

TEST(LzwEncoder, WritesKnownImagesAndNothingBehindThem) {
  const struct {
    int code_size;
    Bytes pixels, data;
  } rows[] = {
      {2, {}, {1, 0x2C, 0}},
      {3, {5}, {2, 0x58, 0x09, 0}},
      {2, {0, 0, 0, 0}, {2, 0x84, 0x51, 0}},  // the end code is a bit wider
      {11, {7, 7}, {6, 0x00, 0x78, 0x00, 0x07, 0x10, 0x80, 0}},
  };
  for (const auto& row : rows) {
    const auto use = [&](MyFILE* stream, GifEncoder* encoder) {
      WriteImage(stream, encoder, row.pixels);
      WriteGifLine(stream, encoder, Bytes{1, 2}.data(), 2);
      WriteGifByte(stream, encoder, 3);
      WriteGifCode(stream, encoder, 1);
      WriteGifCode(stream, encoder, kFlush);
    };
    EXPECT_EQ(Written(row.code_size, use), row.data) << row.code_size << " bits, " << row.pixels.size() << " pixels";
  }
}

TEST(LzwEncoder, TakesNoPixelsFromNothing) {
  const auto use = [](MyFILE* stream, GifEncoder* encoder) {
    WriteGifLine(stream, encoder, nullptr, 5);
    WriteGifLine(stream, encoder, Bytes{5}.data(), 0);
    WriteGifLine(stream, encoder, Bytes{5}.data(), -1);
    WriteImage(stream, encoder, {});
  };
  EXPECT_EQ(Written(2, use), (Bytes{1, 0x2C, 0}));
}

TEST(LzwEncoder, CutsBytesIntoSubBlocks) {
  for (const size_t count : {0, 1, 254, 255, 256, 510, 511, 4607, 4608, 4609, 4863, 10000}) {
    const auto use = [&](MyFILE* stream, GifEncoder* encoder) {
      for (size_t i = 0; i < count; ++i) WriteGifByte(stream, encoder, static_cast<int>(i % 251));
      WriteGifCode(stream, encoder, kFlush);
    };
    Bytes expected;
    for (size_t i = 0; i < count; ++i) {
      if (i % 255 == 0) expected.push_back(static_cast<uint8_t>(std::min<size_t>(count - i, 255)));
      expected.push_back(static_cast<uint8_t>(i % 251));
    }
    expected.push_back(0);
    EXPECT_EQ(Written(8, use), expected) << count;
  }
}

TEST(LzwEncoder, WritesNothingToAStreamForReading) {
  MyFILE stream = {nullptr, 0, 0, nullptr};
  const auto encoder = std::make_unique<GifEncoder>();
  StartGifEncoder(encoder.get(), 8);
  WriteImage(&stream, encoder.get(), Bytes(100000, 7));
  EXPECT_EQ(encoder->finished, 1);
  EXPECT_EQ(stream.position, 0);
}

// Pixels of all kinds that a way of finding strings may be chosen for, one kind after the other.
class PictureMaker {
 public:
  explicit PictureMaker(uint32_t seed) : random_(seed) {}

  int Below(int end) { return static_cast<int>(random_() % static_cast<uint32_t>(end)); }

  Bytes Make(size_t count, int code_size) {
    colours_ = std::min(1 << code_size, 256);
    // Now and then more than fit the code size, or two alone.
    if (Below(10) == 0) colours_ = 256;
    if (Below(3) == 0) colours_ = 2;
    Bytes pixels;
    while (pixels.size() < count) {
      const int kind = Below(7), few = std::min(2 + Below(4), colours_);
      const auto first = static_cast<uint8_t>(Below(colours_)), second = static_cast<uint8_t>(Below(colours_));
      const auto begin = pixels.size();
      const auto end = std::min(begin + static_cast<size_t>(1 << Below(15)), count);
      for (size_t i = begin; i < end; ++i) pixels.push_back(PixelOf(kind, i, few, first, second, pixels));
    }
    return pixels;
  }

 private:
  uint8_t PixelOf(int kind, size_t i, int few, uint8_t first, uint8_t second, const Bytes& before) {
    const auto any = [&](int colours) { return static_cast<uint8_t>(Below(colours)); };
    switch (kind) {
      case 0:
        return first;  // one colour
      case 1:
        return i % 2 ? first : second;  // a checker
      case 2:
        return Below(30) == 0 || before.empty() ? any(colours_) : before.back();  // runs
      case 3:
        return any(2);
      case 4:
        return any(few);
      case 5:
        return Below(20) != 0 && i >= 997 ? before[i - 997] : any(colours_);  // what was there before, but for a few
      default:
        return any(colours_);
    }
  }

  std::mt19937 random_;
  int colours_ = 2;
};

void ExpectTheBytesOfTheOracle(int code_size, const Bytes& pixels, int width) {
  const auto use = [&](MyFILE* stream, GifEncoder* encoder) {
    WriteGifCode(stream, encoder, encoder->strings.clear_code);
    for (size_t at = 0; at < pixels.size(); at += static_cast<size_t>(width)) {
      WriteGifLine(stream, encoder, pixels.data() + at,
                   static_cast<int>(std::min(pixels.size() - at, static_cast<size_t>(width))));
    }
    if (encoder->strings.prefix_code != kNoPrefix) WriteGifCode(stream, encoder, encoder->strings.prefix_code);
    WriteGifCode(stream, encoder, encoder->strings.end_code);
    WriteGifCode(stream, encoder, kFlush);
  };
  const auto most = static_cast<int64_t>(pixels.size());
  ASSERT_TRUE(Written(code_size, use, most) == oracle::EncodeImage(code_size, pixels))
      << code_size << " bits, " << pixels.size() << " pixels in rows of " << width;
}

TEST(LzwEncoder, FindsPixelsThatDoNotFitTheWayChosen) {
  PictureMaker maker(30);
  for (int code_size = 2; code_size < 8; ++code_size) {
    for (const int later : {2, 1 << code_size, (1 << code_size) + 1}) {
      for (const size_t before : {1, 2, 200, 3000}) {
        Bytes pixels(before, 0);
        pixels.push_back(static_cast<uint8_t>(later));
        while (pixels.size() < before + 3000) pixels.push_back(maker.Below(3) == 0 ? static_cast<uint8_t>(later) : 0);
        ASSERT_NO_FATAL_FAILURE(ExpectTheBytesOfTheOracle(code_size, pixels, 1));
      }
    }
  }
}

TEST(LzwEncoder, WritesTheBytesOfTheOracle) {
  PictureMaker maker(20);
  constexpr std::array kMostPixels = {40, 300, 2100, 20000, 20000, 150000};
  for (int i = 0; i < 600; ++i) {
    const int code_size = 2 + maker.Below(10), count = maker.Below(kMostPixels[static_cast<size_t>(maker.Below(6))]);
    const int width = 1 + maker.Below(maker.Below(2) ? 20 : 4000);
    ASSERT_NO_FATAL_FAILURE(
        ExpectTheBytesOfTheOracle(code_size, maker.Make(static_cast<size_t>(count), code_size), width))
        << i;
  }
  for (int64_t count = kSmallImage - 1; count <= kSmallImage + 1; ++count) {
    for (int code_size = 2; code_size <= 11; ++code_size) {
      ASSERT_NO_FATAL_FAILURE(
          ExpectTheBytesOfTheOracle(code_size, maker.Make(static_cast<size_t>(count), code_size), 64));
    }
  }
  for (const int code_size : {2, 8}) {
    ASSERT_NO_FATAL_FAILURE(ExpectTheBytesOfTheOracle(code_size, maker.Make(3000000, code_size), 2000));
  }
}

}  // namespace
