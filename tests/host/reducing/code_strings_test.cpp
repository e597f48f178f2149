// What is counted is what the encoder writes: sizes are compared, for images of all kinds.

#include "host/reducing/code_strings.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <random>
#include <vector>

#include "codec/lzw_encoder.h"

namespace {

int64_t WrittenBytes(const std::vector<uint8_t>& pixels, int code_size) {
  std::FILE* file = std::tmpfile();
  MyFILE stream{nullptr, 0, 0, file};
  const auto encoder = std::make_unique<GifEncoder>();
  MyPutc(&stream, code_size);
  StartGifEncoder(encoder.get(), code_size);
  WriteGifCode(&stream, encoder.get(), encoder->strings.clear_code);
  WriteGifLine(&stream, encoder.get(), pixels.data(), static_cast<int>(pixels.size()));
  WriteGifCode(&stream, encoder.get(), encoder->strings.prefix_code);
  WriteGifCode(&stream, encoder.get(), encoder->strings.end_code);
  WriteGifCode(&stream, encoder.get(), kFlush);
  const int64_t bytes = std::ftell(file);
  std::fclose(file);
  return bytes;
}

TEST(CodeStrings, CountsWhatTheEncoderWrites) {
  std::minstd_rand random(1);
  for (int code_size = 2; code_size <= 8; ++code_size) {
    // Up to so many pixels alike, which makes few long strings or many short ones; enough to clear them several
    // times.
    for (const uint32_t run : {1u, 2u, 9u, 300u}) {
      for (const size_t count : {size_t{1}, size_t{2}, size_t{255}, size_t{4000}, size_t{60000}}) {
        std::vector<uint8_t> pixels;
        while (pixels.size() < count)
          pixels.resize(pixels.size() + 1 + random() % run, static_cast<uint8_t>(random() % (1u << code_size)));
        pixels.resize(count);
        EXPECT_EQ(host::CountBytes(pixels, code_size), WrittenBytes(pixels, code_size))
            << code_size << " " << run << " " << count;
      }
    }
  }
}

}  // namespace
