// What the encoder writes byte by byte, and what it ignores; whole images are tested by reading them.

#include "codec/lzw_encoder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<uint8_t>;

// What a user of an encoder writes.
template <typename Use>
Bytes Written(int code_size, Use use) {
  char* bytes = nullptr;
  size_t size = 0;
  MyFILE stream = {nullptr, 0, 0, open_memstream(&bytes, &size)};
  const auto encoder = std::make_unique<GifEncoder>();
  StartGifEncoder(encoder.get(), code_size);
  use(&stream, encoder.get());
  std::fclose(stream.file);
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

}  // namespace
