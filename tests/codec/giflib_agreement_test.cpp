// Files by an independent encoder, read by an independent decoder and by this one.

#include <gif_lib.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <vector>

#include "codec/document.h"
#include "codec/reader.h"

namespace {

using Bytes = std::vector<uint8_t>;

int Append(GifFileType* gif, const GifByteType* bytes, int count) {
  auto* out = static_cast<Bytes*>(gif->UserData);
  out->insert(out->end(), bytes, bytes + count);
  return count;
}

int Take(GifFileType* gif, GifByteType* bytes, int count) {
  auto* stream = static_cast<MyFILE*>(gif->UserData);
  ReadBytes(stream, bytes, count);
  return count;
}

// Pixels in runs, so that strings get long: the shorter the runs, the more like noise.
Bytes RandomFile(std::mt19937& random) {
  const auto below = [&](int end) { return static_cast<int>(random() % static_cast<uint32_t>(end)); };
  Bytes file;
  GifFileType* gif = EGifOpen(&file, Append, nullptr);
  const int depth = 1 + below(8), colours = 1 << depth;
  ColorMapObject* table = GifMakeMapObject(colours, nullptr);
  for (int i = 0; i < colours; ++i) table->Colors[i].Green = static_cast<GifByteType>(below(256));
  EGifPutScreenDesc(gif, 400, 400, 8, 0, table);
  const bool local =
      below(2) == 0;  // for all images: the encoder forgets to release a table before an image without
  for (int image = 1 + below(3); image > 0; --image) {
    const bool small = below(4) == 0, interlaced = below(2) == 0;
    const int width = 1 + below(small ? 9 : 300), height = 1 + below(small ? 9 : 200), run = 1 + below(40);
    EGifPutImageDesc(gif, below(100), below(100), width, height, interlaced, local ? table : nullptr);
    Bytes line(static_cast<size_t>(width));
    for (int y = 0; y < height; ++y) {
      for (size_t x = 0; x < line.size(); ++x) {
        line[x] = x > 0 && below(run) > 0 ? line[x - 1] : static_cast<uint8_t>(below(colours));
      }
      EGifPutLine(gif, line.data(), width);
    }
  }
  GifFreeMapObject(table);
  EGifCloseFile(gif, nullptr);
  return file;
}

TEST(GiflibAgreement, SameRectanglesTablesAndPixels) {
  std::mt19937 random(7);
  for (int round = 0; round < 150; ++round) {
    SCOPED_TRACE(round);
    const Bytes file = RandomFile(random);
    MyFILE stream{file.data(), static_cast<int64_t>(file.size()), 0, nullptr};
    GifFileType* theirs = DGifOpen(&stream, Take, nullptr);
    ASSERT_EQ(DGifSlurp(theirs), GIF_OK);
    stream.position = 0;
    Gif* ours = NewGif();
    ReadGif(&stream, ours);
    EXPECT_EQ(stream.position, stream.size);
    ASSERT_EQ(ours->count, theirs->ImageCount);
    for (int32_t i = 0; i < ours->count; ++i) {
      const GifPicture* picture = ours->blocks[i]->picture;
      const SavedImage& image = theirs->SavedImages[i];
      EXPECT_EQ(picture->left, image.ImageDesc.Left);
      EXPECT_EQ(picture->top, image.ImageDesc.Top);
      ASSERT_EQ(picture->width, image.ImageDesc.Width);
      ASSERT_EQ(picture->height, image.ImageDesc.Height);
      EXPECT_EQ(picture->interlace != 0, image.ImageDesc.Interlace);
      const GifPalette* palette = picture->has_cmap ? picture->cmap : ours->screen->cmap;
      const ColorMapObject* table = picture->has_cmap ? image.ImageDesc.ColorMap : theirs->SColorMap;
      ASSERT_EQ(palette->count, table->ColorCount);
      for (int32_t c = 0; c < palette->count; ++c)
        EXPECT_EQ(palette->colours[c].green, table->Colors[c].Green);
      for (int32_t y = 0; y < picture->height; ++y) {
        const GifByteType* row = image.RasterBits + y * picture->width;
        ASSERT_TRUE(std::equal(row, row + picture->width, picture->data[y])) << "row " << y;
      }
    }
    DeleteGif(ours);
    DGifCloseFile(theirs, nullptr);
  }
}

}  // namespace
