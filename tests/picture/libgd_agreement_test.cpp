// GIFs written and read by libgd: pictures and masks are the same, pixel by pixel.

#include <gd.h>
#include <gtest/gtest.h>

#include <memory>
#include <random>

#include "codec/reader.h"
#include "picture/conversion.h"
#include "tests/picture/fake_host.h"

namespace {

using GdImage = std::unique_ptr<gdImage, decltype(&gdImageDestroy)>;
using Bytes = std::unique_ptr<void, decltype(&gdFree)>;

struct Drawing {
  int width, height, colours;
  bool interlaced;
  int transparent;  // index, or -1
};

GdImage Draw(const Drawing& drawing) {
  GdImage image(gdImageCreate(drawing.width, drawing.height), &gdImageDestroy);
  std::minstd_rand random(drawing.width + drawing.colours);
  const auto byte = [&] { return static_cast<int>(random() >> 8 & 0xFF); };
  for (int i = 0; i < drawing.colours; ++i) gdImageColorAllocate(image.get(), byte(), byte(), byte());
  for (int y = 0; y < drawing.height; ++y) {
    for (int x = 0; x < drawing.width; ++x) gdImageSetPixel(image.get(), x, y, byte() % drawing.colours);
  }
  gdImageInterlace(image.get(), drawing.interlaced);
  gdImageColorTransparent(image.get(), drawing.transparent);
  return image;
}

GifPicture* FirstImage(const Gif& gif) {
  for (int32_t i = 0; i < gif.count; ++i) {
    if (gif.blocks[i]->picture) return gif.blocks[i]->picture;
  }
  return nullptr;
}

// What libgd reads from the file is what the two pictures show.
void ExpectSame(const gdImage& image, REALpictureStruct* picture, REALpictureStruct* mask) {
  for (int y = 0; y < image.sy; ++y) {
    for (int x = 0; x < image.sx; ++x) {
      const int index = image.pixels[y][x];
      const uint32_t bytes = image.blue[index] << 24 | image.green[index] << 16 | image.red[index] << 8;
      ASSERT_EQ(BytesAt(picture, x, y), bytes) << x << ", " << y;
      ASSERT_EQ(BytesAt(mask, x, y), index == image.transparent ? 0xFFFFFF00 : 0) << x << ", " << y;
    }
  }
}

TEST(LibgdAgreement, PicturesAndMasksOfItsGifs) {
  constexpr struct { int width, height; } kSizes[] = {{1, 1}, {7, 5}, {64, 33}, {3, 300}, {257, 40}};
  constexpr int kColours[] = {1, 2, 3, 16, 17, 128, 256};
  int files = 0;
  for (const auto& size : kSizes) {
    for (int colours : kColours) {
      const Drawing drawing = {size.width, size.height, colours, files % 2 == 1, files % 3 == 0 ? -1 : colours - 1};
      ++files;
      SCOPED_TRACE(testing::Message() << size.width << " x " << size.height << ", " << colours << " colours");
      int length = 0;
      const Bytes bytes(gdImageGifPtr(Draw(drawing).get(), &length), &gdFree);
      const GdImage expected(gdImageCreateFromGifPtr(length, bytes.get()), &gdImageDestroy);
      ASSERT_TRUE(expected);

      const std::unique_ptr<Gif, decltype(&DeleteGif)> gif(NewGif(), &DeleteGif);
      MyFILE stream = {static_cast<const uint8_t*>(bytes.get()), length, 0, nullptr};
      ReadGif(&stream, gif.get());
      GifPicture* image = FirstImage(*gif);
      ASSERT_TRUE(image);
      FakeHost host({.contexts = false, .application = "ConsoleApplication"});
      REALpictureStruct* picture = MakePictureFromGifPicture(gif.get(), image);
      REALpictureStruct* mask = MakeMaskFromGifPicture(image, FindTransparentIndex(gif.get(), image));
      ASSERT_TRUE(picture && mask);
      ExpectSame(*expected, picture, mask);
      EXPECT_TRUE(host.IsBalancedWithout({picture, mask}));
    }
  }
  EXPECT_GE(files, 20);
}

}  // namespace
