// What we write, other programs' readers and our own read back as it was meant.

#include <gd.h>
#include <gif_lib.h>
#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "codec/reader.h"
#include "tests/support/making_documents.h"

namespace {

using Bytes = std::vector<uint8_t>;
using Random = std::mt19937;

int Below(Random& random, int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); }

std::vector<uint32_t> RandomColours(Random& random, int depth) {
  std::vector<uint32_t> rgb(size_t{1} << depth);
  for (uint32_t& colour : rgb) colour = static_cast<uint32_t>(random() & 0xFFFFFF);
  return rgb;
}

// Noise, bands or large areas, in colours that the depth has.
Bytes RandomPixels(Random& random, int width, int height, int depth) {
  const int colours = 1 << depth;
  const int kind = Below(random, 3);
  const int step = Below(random, 50) + 1;
  Bytes pixels(static_cast<size_t>(width) * height);
  for (size_t i = 0; i < pixels.size(); ++i) {
    const int x = static_cast<int>(i) % width, y = static_cast<int>(i) / width;
    const int colour = kind == 0 ? Below(random, colours) : kind == 1 ? (x + y) / step : (x / 97 + y / step) * 5;
    pixels[i] = static_cast<uint8_t>(colour % colours);
  }
  return pixels;
}

// A document of some images, each with a table of its own or with the global one, with extensions in between.
Document RandomDocument(Random& random, int width, int height, int images) {
  Document gif(NewGif());
  std::memcpy(gif->header, "GIF89a", 6);
  const int depth = 1 + Below(random, 8);
  *gif->screen = {width, height, 1, 1 + Below(random, 8), Below(random, 2), depth, 0, 0, gif->screen->cmap};
  SetPalette(gif->screen->cmap, RandomColours(random, depth));
  gif->screen->bgcolour = Below(random, gif->screen->cmap->count);
  for (int i = 0; i < images; ++i) {
    if (Below(random, 2) == 0) AddExtension(gif.get(), 0xF9, {std::string("\0\x0A\0\0", 4)});
    if (Below(random, 4) == 0) AddExtension(gif.get(), 0xFE, {"some", std::string(255, '.'), "words"});
    // The first image covers the screen.
    const int w = i == 0 ? width : 1 + Below(random, width), h = i == 0 ? height : 1 + Below(random, height);
    const bool local = Below(random, 2) == 0;
    const int bits = local ? 1 + Below(random, 8) : depth;
    GifPicture* picture = AddPicture(gif.get(), w, h, Below(random, 2) == 0, RandomPixels(random, w, h, bits));
    picture->left = Below(random, width - w + 1);
    picture->top = Below(random, height - h + 1);
    picture->reserved = Below(random, 4);
    picture->sorted = local && Below(random, 2) == 0;
    picture->has_cmap = local;
    picture->cmap_depth = local ? bits : 0;
    picture->cmap = MakePalette(local ? RandomColours(random, bits) : std::vector<uint32_t>());
  }
  return gif;
}

const Colour* PaletteOf(const Gif* gif, const GifPicture* picture) {
  return (picture->has_cmap ? picture->cmap : gif->screen->cmap)->colours;
}

std::vector<const GifPicture*> PicturesOf(const Gif* gif) {
  std::vector<const GifPicture*> pictures;
  for (int i = 0; i < gif->count; ++i) {
    if (gif->blocks[i]->picture) pictures.push_back(gif->blocks[i]->picture);
  }
  return pictures;
}

struct Reading {
  const Bytes* bytes;
  size_t position;
};

int ReadForGiflib(GifFileType* file, GifByteType* target, int count) {
  auto* reading = static_cast<Reading*>(file->UserData);
  const size_t given = std::min<size_t>(count, reading->bytes->size() - reading->position);
  std::memcpy(target, reading->bytes->data() + reading->position, given);
  reading->position += given;
  return static_cast<int>(given);
}

::testing::AssertionResult SameImage(const Gif* gif, const GifPicture* ours, const GifFileType* file,
                                     const SavedImage& theirs) {
  const GifImageDesc& at = theirs.ImageDesc;
  if (at.Left != ours->left || at.Top != ours->top || at.Width != ours->width || at.Height != ours->height ||
      at.Interlace != (ours->interlace != 0)) {
    return ::testing::AssertionFailure() << "descriptor";
  }
  for (int y = 0; y < ours->height; ++y) {
    if (std::memcmp(ours->data[y], theirs.RasterBits + static_cast<size_t>(y) * ours->width, ours->width) != 0) {
      return ::testing::AssertionFailure() << "row " << y;
    }
  }
  const ColorMapObject* map = at.ColorMap ? at.ColorMap : file->SColorMap;
  for (int i = 0; i < map->ColorCount; ++i) {
    const Colour& colour = PaletteOf(gif, ours)[i];
    const GifColorType& other = map->Colors[i];
    if (colour.red != other.Red || colour.green != other.Green || colour.blue != other.Blue) {
      return ::testing::AssertionFailure() << "colour " << i;
    }
  }
  return ::testing::AssertionSuccess();
}

void ExpectGiflibAgrees(const Gif* gif, const Bytes& bytes) {
  Reading reading = {&bytes, 0};
  GifFileType* file = DGifOpen(&reading, ReadForGiflib, nullptr);
  ASSERT_NE(file, nullptr);
  ASSERT_EQ(DGifSlurp(file), GIF_OK) << GifErrorString(file->Error);
  const std::vector<const GifPicture*> pictures = PicturesOf(gif);
  EXPECT_EQ(file->SWidth, gif->screen->width);
  EXPECT_EQ(file->SHeight, gif->screen->height);
  EXPECT_EQ(file->SBackGroundColor, gif->screen->bgcolour);
  ASSERT_EQ(file->ImageCount, static_cast<int>(pictures.size()));
  for (int i = 0; i < file->ImageCount; ++i) EXPECT_TRUE(SameImage(gif, pictures[i], file, file->SavedImages[i]));
  EXPECT_EQ(reading.position, bytes.size());
  DGifCloseFile(file, nullptr);
}

// libgd reads the first image.
void ExpectLibgdAgrees(const Gif* gif, Bytes bytes) {
  const GifPicture* picture = PicturesOf(gif).front();
  gdImagePtr image = gdImageCreateFromGifPtr(static_cast<int>(bytes.size()), bytes.data());
  ASSERT_NE(image, nullptr);
  ASSERT_EQ(gdImageSX(image), picture->width);
  ASSERT_EQ(gdImageSY(image), picture->height);
  int wrong = 0;
  for (int y = 0; y < picture->height; ++y) {
    for (int x = 0; x < picture->width; ++x) {
      const Colour& colour = PaletteOf(gif, picture)[picture->data[y][x]];
      const int pixel = gdImageGetTrueColorPixel(image, x, y) & 0xFFFFFF;
      wrong += pixel != (colour.red << 16 | colour.green << 8 | colour.blue);
    }
  }
  EXPECT_EQ(wrong, 0);
  gdImageDestroy(image);
}

// Our own reader makes the same tree of it: written again, the bytes are the same, and so are rows and reserved bits.
void ExpectReaderAgrees(const Gif* gif, const Bytes& bytes) {
  const Document read(NewGif());
  MyFILE stream = {bytes.data(), static_cast<int64_t>(bytes.size()), 0, nullptr};
  ReadGif(&stream, read.get());
  EXPECT_TRUE(Written(read.get()) == bytes);
  const auto ours = PicturesOf(gif), theirs = PicturesOf(read.get());
  ASSERT_EQ(ours.size(), theirs.size());
  for (size_t i = 0; i < ours.size(); ++i) {
    EXPECT_EQ(ours[i]->reserved, theirs[i]->reserved);
    for (int y = 0; y < ours[i]->height; ++y) {
      ASSERT_EQ(std::memcmp(ours[i]->data[y], theirs[i]->data[y], ours[i]->width), 0) << y;
    }
  }
}

TEST(IndependentReaders, AgreeOnWhatWeWrite) {
  const struct {
    int width, height, images, documents;
  } sizes[] = {{1, 1, 1, 20},   {1, 300, 2, 10},  {300, 1, 2, 10},    {7, 9, 5, 40},
               {64, 48, 4, 40}, {320, 200, 3, 8}, {2000, 1000, 1, 3}, {40, 30, 120, 2}};
  Random random(7);
  for (const auto& size : sizes) {
    for (int i = 0; i < size.documents; ++i) {
      SCOPED_TRACE(std::to_string(size.width) + " x " + std::to_string(size.height) + ", document " +
                   std::to_string(i));
      const Document gif = RandomDocument(random, size.width, size.height, size.images);
      const Bytes bytes = Written(gif.get());
      ExpectGiflibAgrees(gif.get(), bytes);
      ExpectLibgdAgrees(gif.get(), bytes);
      ExpectReaderAgrees(gif.get(), bytes);
    }
  }
}

}  // namespace
