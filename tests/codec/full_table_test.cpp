// Codes that follow when the table is full and no clear code comes. Built twice, for either choice.

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "codec/reader.h"

// An image 100 pixels wide, each pixel coded as itself but for every ninth code once the table is full: that is the
// table's first entry. Gives the file and, in `pixels`, what the codes stand for.
static std::vector<uint8_t> FileWithoutClearCodes(std::vector<uint8_t>& pixels) {
  constexpr int kClear = 256, kWidth = 100, kHeight = 120, kFirstEntry = 258;
  std::vector<uint8_t> data;
  uint64_t bits = 0;
  int held = 0, width = 9, count = kFirstEntry;
  const auto put = [&](int code) {
    bits |= static_cast<uint64_t>(code) << held;
    for (held += width; held >= 8; held -= 8, bits >>= 8) data.push_back(static_cast<uint8_t>(bits));
    if (count++ >= 1 << width && width < 12) ++width;
  };
  put(kClear);
  count = kFirstEntry;
  for (int i = 0; pixels.size() < kWidth * kHeight; ++i) {
    if (count > 4200 && i % 9 == 0) {
      put(kFirstEntry);
      pixels.insert(pixels.end(), {pixels[0], pixels[1]});
    } else {
      pixels.push_back(static_cast<uint8_t>(i * 37 + i / 11));
      put(pixels.back());
    }
  }
  pixels.resize(kWidth * kHeight);
  data.insert(data.end(), {static_cast<uint8_t>(bits), static_cast<uint8_t>(bits >> 8)});

  std::vector<uint8_t> file = {'G', 'I', 'F', '8', '9', 'a', 1, 0, 1, 0, 0, 0, 0};
  file.insert(file.end(), {kImageIntroducer, 0, 0, 0, 0, kWidth, 0, kHeight, 0, 0, 8});
  for (size_t at = 0; at < data.size(); at += 255) {
    const size_t length = std::min<size_t>(255, data.size() - at);
    file.push_back(static_cast<uint8_t>(length));
    file.insert(file.end(), data.begin() + static_cast<long>(at), data.begin() + static_cast<long>(at + length));
  }
  file.insert(file.end(), {0, kTrailer});
  return file;
}

TEST(FullTable, EndsTheRowOrGoesOnAsBuilt) {
  std::vector<uint8_t> expected;
  const std::vector<uint8_t> file = FileWithoutClearCodes(expected);
  MyFILE stream = {file.data(), static_cast<int64_t>(file.size()), 0, nullptr};
  Gif* gif = NewGif();
  ReadGif(&stream, gif);
  ASSERT_EQ(gif->count, 1);
  const GifPicture* picture = gif->blocks[0]->picture;
#if defined(GIF_DEFERRED_CLEAR)
  for (int y = 0; y < picture->height; ++y) {
    ASSERT_TRUE(std::equal(picture->data[y], picture->data[y] + 100, &expected[static_cast<size_t>(y) * 100])) << y;
  }
#else
  // 3,839 codes fill the table, so row 38 is the first that ends early, and each one after it has one code's pixels.
  EXPECT_TRUE(std::equal(picture->data[37], picture->data[37] + 100, &expected[3700]));
  for (int y = 38; y < picture->height; ++y) {
    const int from = y == 38 ? 39 + 1 : 2;
    EXPECT_EQ(std::count(picture->data[y] + from, picture->data[y] + 100, 0), 100 - from) << y;
  }
#endif
  DeleteGif(gif);
}
