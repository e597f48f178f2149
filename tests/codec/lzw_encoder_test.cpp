#include "codec/lzw_encoder.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>

#include "tests/oracle/slow_encoder.h"

namespace {

// The image data that the encoder writes, driven as the writer drives it.
Bytes ImageData(int code_size, const std::vector<Bytes>& rows) {
  char* bytes = nullptr;
  size_t size = 0;
  MyFILE stream = {nullptr, 0, 0, open_memstream(&bytes, &size)};
  const auto encoder = std::make_unique<GifEncoder>();
  StartGifEncoder(encoder.get(), code_size);
  MyPutc(&stream, code_size);
  WriteGifCode(&stream, encoder.get(), encoder->clear_code);
  for (const Bytes& row : rows) {
    WriteGifLine(&stream, encoder.get(), row.empty() ? nullptr : row.data(), static_cast<int>(row.size()));
  }
  if (encoder->prefix_code != kNoPrefix) WriteGifCode(&stream, encoder.get(), encoder->prefix_code);
  WriteGifCode(&stream, encoder.get(), encoder->end_code);
  WriteGifCode(&stream, encoder.get(), kFlush);
  std::fclose(stream.file);
  Bytes data(bytes, bytes + size);
  std::free(bytes);
  return data;
}

using Random = std::mt19937;

int Below(Random& random, int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); }

// Noise, short or long runs, a gradient with errors, or one colour, mostly with boxes of that gradient.
void Paint(Random& random, int colours, int width, Bytes& pixels) {
  const int kind = Below(random, 5), ink = Below(random, colours), step = Below(random, 9) + 1;
  const int run = kind == 0 ? 1 : kind == 1 ? 12 : width * 4;
  for (size_t i = 0; i < pixels.size(); ++i) {
    const int x = static_cast<int>(i) % width, y = static_cast<int>(i) / width;
    int colour = ink;
    if (kind <= 2) colour = i > 0 && Below(random, run) > 0 ? pixels[i - 1] : Below(random, colours);
    if (kind == 3 || (kind == 4 && step > 3 && x / 40 == y / 5)) colour = (x + y) / step + Below(random, 8) / 7;
    pixels[i] = static_cast<uint8_t>(colour % colours);
  }
}

// Rows of one width, some missing; now and then long enough to use up all codes more than once.
std::vector<Bytes> RandomRows(Random& random, int colours) {
  const int width = Below(random, 400) + 1;
  const int height = Below(random, Below(random, 20) == 0 ? 200 : 16);
  Bytes pixels(static_cast<size_t>(width) * height);
  Paint(random, colours, width, pixels);
  // Now and then single pixels that the code size cannot hold; the first one then looks like a string's code.
  for (int i = Below(random, 6) == 0 && height > 0 ? Below(random, 6) : -1; i >= 0; --i) {
    pixels[i == 0 ? 0 : random() % pixels.size()] = static_cast<uint8_t>(colours + 2 + Below(random, 4));
  }
  std::vector<Bytes> rows;
  for (int y = 0; y < height; ++y) {
    rows.emplace_back(pixels.begin() + y * width, pixels.begin() + (y + 1) * width);
    if (Below(random, 10) == 0) rows.emplace_back();
  }
  return rows;
}

TEST(LzwEncoder, EqualsTheSlowEncoder) {
  Random random(1);
  for (int i = 0; i < 10000; ++i) {
    const int code_size = 2 + Below(random, Below(random, 8) == 0 ? 10 : 7);
    // Now and then all pixels are such.
    const int colours = Below(random, 10) == 0 ? 256 : 1 << std::min(code_size, 8);
    const std::vector<Bytes> rows = RandomRows(random, colours);
    ASSERT_EQ(ImageData(code_size, rows), SlowImageData(code_size, rows))
        << "image " << i << ", code size " << code_size << ", colours " << colours;
  }
}

// The pixel in hand when all strings are cleared looks like the code of the first string after that.
TEST(LzwEncoder, TakesNoPixelForACode) {
  Random random(2);
  const auto encoder = std::make_unique<GifEncoder>();
  StartGifEncoder(encoder.get(), 2);
  MyFILE nowhere = {nullptr, 0, 0, nullptr};
  Bytes row;
  for (int last = 0; encoder->next_code >= last;) {
    last = encoder->next_code;
    row.push_back(row.empty() || Below(random, 30) == 0 ? static_cast<uint8_t>(Below(random, 4)) : row.back());
    WriteGifLine(&nowhere, encoder.get(), &row.back(), 1);
  }
  row.back() = 7;
  EXPECT_EQ(ImageData(2, {row, Bytes(100)}), SlowImageData(2, {row, Bytes(100)}));
}

}  // namespace
