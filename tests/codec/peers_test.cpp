// Other programs' codecs and ours: each reads what the others write as it was meant.

#include <gd.h>
#include <gif_lib.h>
#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "codec/reader.h"
#include "tests/support/making_documents.h"

namespace {

using Bytes = std::vector<uint8_t>;

int Below(int limit) {
  static std::mt19937 random(7);
  return static_cast<int>(random() % static_cast<unsigned>(limit));
}

std::vector<uint32_t> RandomColours(int depth) {
  std::vector<uint32_t> rgb(size_t{1} << depth);
  for (uint32_t& colour : rgb) colour = static_cast<uint32_t>(Below(0x1000000));
  return rgb;
}

// Noise, runs, bands or large areas, in colours that the depth has.
Bytes RandomPixels(int width, int height, int depth) {
  const int kind = Below(4), step = Below(50) + 1;
  Bytes pixels(static_cast<size_t>(width) * height);
  for (size_t i = 0; i < pixels.size(); ++i) {
    const int x = static_cast<int>(i) % width, y = static_cast<int>(i) / width;
    const bool runs_on = kind == 1 && i > 0 && Below(step) > 0;
    const int colour = kind == 2 ? (x + y) / step : kind == 3 ? (x / 97 + y / step) * 5 : Below(256);
    pixels[i] = runs_on ? pixels[i - 1] : static_cast<uint8_t>(colour % (1 << depth));
  }
  return pixels;
}

// A document of some images, each with a table of its own or with the global one, with extensions in between.
Document RandomDocument(int width, int height, int images) {
  Document gif(NewGif());
  std::memcpy(gif->header, "GIF89a", 6);
  const int depth = 1 + Below(8);
  *gif->screen = {width, height, 1, 1 + Below(8), Below(2), depth, Below(1 << depth), 0, gif->screen->cmap};
  SetPalette(gif->screen->cmap, RandomColours(depth));
  for (int i = 0; i < images; ++i) {
    if (Below(2) == 0) AddExtension(gif.get(), 0xF9, {std::string("\0\x0A\0\0", 4)});
    if (Below(4) == 0) AddExtension(gif.get(), 0xFE, {"some", std::string(255, '.'), "words"});
    // The first image covers the screen.
    const int w = i == 0 ? width : 1 + Below(width), h = i == 0 ? height : 1 + Below(height);
    const bool local = Below(2) == 0;
    const int bits = local ? 1 + Below(8) : depth;
    GifPicture* picture = AddPicture(gif.get(), w, h, Below(2) == 0, RandomPixels(w, h, bits));
    picture->left = Below(width - w + 1);
    picture->top = Below(height - h + 1);
    picture->reserved = Below(4);
    picture->sorted = local && Below(2) == 0;
    picture->has_cmap = local;
    picture->cmap_depth = local ? bits : 0;
    picture->cmap = MakePalette(local ? RandomColours(bits) : std::vector<uint32_t>());
  }
  return gif;
}

// What all of them can tell of an image: the rectangle, then whether it is interlaced; the table that counts; the
// rows.
struct Seen {
  std::vector<int> descriptor;
  std::vector<uint32_t> colours;
  Bytes pixels;

  bool operator==(const Seen&) const = default;
};

uint32_t Rgb(int red, int green, int blue) { return static_cast<uint32_t>(red << 16 | green << 8 | blue); }

std::vector<Seen> ImagesOf(const Gif* gif) {
  std::vector<Seen> images;
  for (int i = 0; i < gif->count; ++i) {
    const GifPicture* p = gif->blocks[i]->picture;
    if (!p) continue;
    Seen& seen = images.emplace_back(Seen{{p->left, p->top, p->width, p->height, p->interlace}, {}, {}});
    const GifPalette* table = p->has_cmap ? p->cmap : gif->screen->cmap;
    for (int c = 0; c < table->count; ++c) {
      const Colour& colour = table->colours[c];
      seen.colours.push_back(Rgb(colour.red, colour.green, colour.blue));
    }
    for (int y = 0; y < p->height; ++y) seen.pixels.insert(seen.pixels.end(), p->data[y], p->data[y] + p->width);
  }
  return images;
}

int TakeForGiflib(GifFileType* file, GifByteType* bytes, int count) {
  ReadBytes(static_cast<MyFILE*>(file->UserData), bytes, count);
  return count;
}

std::vector<Seen> ImagesByGiflib(const Gif* gif, const Bytes& bytes) {
  MyFILE stream = {bytes.data(), static_cast<int64_t>(bytes.size()), 0, nullptr};
  GifFileType* file = DGifOpen(&stream, TakeForGiflib, nullptr);
  EXPECT_EQ(DGifSlurp(file), GIF_OK) << GifErrorString(file->Error);
  EXPECT_EQ(file->SWidth, gif->screen->width);
  EXPECT_EQ(file->SHeight, gif->screen->height);
  EXPECT_EQ(file->SBackGroundColor, gif->screen->bgcolour);
  EXPECT_EQ(stream.position, stream.size);
  std::vector<Seen> images;
  for (int i = 0; i < file->ImageCount; ++i) {
    const SavedImage& image = file->SavedImages[i];
    const GifImageDesc& at = image.ImageDesc;
    const GifByteType* pixels = image.RasterBits;
    Seen& seen = images.emplace_back(Seen{{at.Left, at.Top, at.Width, at.Height, at.Interlace}, {}, {}});
    const ColorMapObject* table = at.ColorMap ? at.ColorMap : file->SColorMap;
    for (int c = 0; c < table->ColorCount; ++c) {
      seen.colours.push_back(Rgb(table->Colors[c].Red, table->Colors[c].Green, table->Colors[c].Blue));
    }
    seen.pixels.assign(pixels, pixels + static_cast<size_t>(at.Width) * at.Height);
  }
  DGifCloseFile(file, nullptr);
  return images;
}

// libgd reads the first image, in true colours.
void ExpectLibgdAgrees(const Seen& first, Bytes bytes) {
  gdImagePtr image = gdImageCreateFromGifPtr(static_cast<int>(bytes.size()), bytes.data());
  ASSERT_NE(image, nullptr);
  const int width = gdImageSX(image), height = gdImageSY(image);
  ASSERT_EQ(std::vector<int>({width, height}), std::vector<int>({first.descriptor[2], first.descriptor[3]}));
  int wrong = 0;
  for (int i = 0; i < width * height; ++i) {
    const int pixel = gdImageGetTrueColorPixel(image, i % width, i / width) & 0xFFFFFF;
    wrong += static_cast<uint32_t>(pixel) != first.colours[first.pixels[i]];
  }
  EXPECT_EQ(wrong, 0);
  gdImageDestroy(image);
}

Document ReadBack(const Bytes& bytes) {
  Document read(NewGif());
  MyFILE stream = {bytes.data(), static_cast<int64_t>(bytes.size()), 0, nullptr};
  ReadGif(&stream, read.get());
  EXPECT_EQ(stream.position, stream.size);
  return read;
}

int AppendForGiflib(GifFileType* file, const GifByteType* bytes, int count) {
  auto* out = static_cast<Bytes*>(file->UserData);
  out->insert(out->end(), bytes, bytes + count);
  return count;
}

// The images by another encoder. It forgets to release a table before an image without, so all have one; it
// interlaces nothing.
Bytes WrittenByGiflib(const std::vector<Seen>& images) {
  Bytes bytes;
  GifFileType* file = EGifOpen(&bytes, AppendForGiflib, nullptr);
  EGifPutScreenDesc(file, 2000, 1000, 8, 0, nullptr);
  for (const Seen& image : images) {
    ColorMapObject* table = GifMakeMapObject(static_cast<int>(image.colours.size()), nullptr);
    for (size_t c = 0; c < image.colours.size(); ++c) {
      const uint32_t rgb = image.colours[c];
      table->Colors[c] = {static_cast<uint8_t>(rgb >> 16), static_cast<uint8_t>(rgb >> 8), static_cast<uint8_t>(rgb)};
    }
    const std::vector<int>& at = image.descriptor;
    EGifPutImageDesc(file, at[0], at[1], at[2], at[3], false, table);
    for (int y = 0; y < at[3]; ++y) {
      const auto first = image.pixels.begin() + static_cast<std::ptrdiff_t>(y) * at[2];
      Bytes row(first, first + at[2]);
      EGifPutLine(file, row.data(), at[2]);
    }
    GifFreeMapObject(table);
  }
  EGifCloseFile(file, nullptr);
  return bytes;
}

TEST(Peers, AgreeOnWhatEachWrites) {
  const struct {
    int width, height, images, documents;
  } sizes[] = {{1, 1, 1, 20},   {1, 300, 2, 10},   {300, 1, 2, 10},    {7, 9, 5, 40},
               {64, 48, 4, 40}, {320, 200, 3, 30}, {2000, 1000, 1, 3}, {40, 30, 120, 2}};
  for (const auto& size : sizes) {
    for (int i = 0; i < size.documents; ++i) {
      SCOPED_TRACE(std::to_string(size.width) + " x " + std::to_string(size.height) + ", document " +
                   std::to_string(i));
      const Document gif = RandomDocument(size.width, size.height, size.images);
      std::vector<Seen> images = ImagesOf(gif.get());
      const Bytes bytes = Written(gif.get());
      EXPECT_TRUE(ImagesByGiflib(gif.get(), bytes) == images);
      ExpectLibgdAgrees(images.front(), bytes);
      // Our own reader makes the same tree of it, down to the reserved bits: written again, the bytes are the same.
      const Document read = ReadBack(bytes);
      EXPECT_TRUE(ImagesOf(read.get()) == images);
      EXPECT_TRUE(Written(read.get()) == bytes);
      for (Seen& image : images) image.descriptor[4] = 0;
      EXPECT_TRUE(ImagesOf(ReadBack(WrittenByGiflib(images)).get()) == images);
    }
  }
}

}  // namespace
