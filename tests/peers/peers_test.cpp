// Other programs' codecs and ours: each reads what the others write as it was meant, and what libgd sees in a file is
// what our pictures and masks show.

#include <gd.h>
#include <gif_lib.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <vector>

#include "bridge/host_reference.h"
#include "codec/reader.h"
#include "codec/writer.h"
#include "host/host/picture.h"
#include "picture/conversion.h"
#include "tests/support/lending.h"

namespace {

using Bytes = std::vector<uint8_t>;
using Document = std::unique_ptr<Gif, decltype(&DeleteGif)>;

int Below(int limit) {
  static std::mt19937 random(7);
  return static_cast<int>(random() % static_cast<unsigned>(limit));
}

// --- Documents as giflib keeps them -----------------------------------------------------------------------------

void FreeDocument(GifFileType* file) {
  GifFreeMapObject(file->SColorMap);
  GifFreeSavedImages(file);
  delete file;
}
using GiflibDocument = std::unique_ptr<GifFileType, decltype(&FreeDocument)>;

ColorMapObject* RandomColours(int depth) {
  ColorMapObject* table = GifMakeMapObject(1 << depth, nullptr);
  for (int i = 0; i < table->ColorCount; ++i) {
    table->Colors[i] = {static_cast<uint8_t>(Below(256)), static_cast<uint8_t>(Below(256)),
                        static_cast<uint8_t>(Below(256))};
  }
  return table;
}

// Noise or runs, in colours that the depth has.
void Paint(GifByteType* pixels, int count, int depth) {
  const int longest = Below(2) == 0 ? 1 : 1 + Below(500);
  for (int i = 0; i < count; ++i) {
    pixels[i] = i > 0 && Below(longest) > 0 ? pixels[i - 1] : static_cast<uint8_t>(Below(1 << depth));
  }
}

void AddExtension(SavedImage* to, int marker, std::initializer_list<Bytes> sub_blocks) {
  for (Bytes bytes : sub_blocks) {
    GifAddExtensionBlock(&to->ExtensionBlockCount, &to->ExtensionBlocks, marker, static_cast<unsigned>(bytes.size()),
                         bytes.data());
    marker = CONTINUE_EXT_FUNC_CODE;
  }
}

// Some images, from one of them on with tables of their own (giflib forgets to release one before an image without),
// with extensions in between.
GiflibDocument RandomDocument(int width, int height, int images) {
  GiflibDocument gif(new GifFileType{}, FreeDocument);
  const int depth = 1 + Below(8), first_local = Below(2 * images);
  gif->SWidth = width;
  gif->SHeight = height;
  gif->SColorResolution = 1 + Below(8);
  gif->SBackGroundColor = Below(1 << depth);
  gif->SColorMap = RandomColours(depth);
  for (int i = 0; i < images; ++i) {
    SavedImage* image = GifMakeSavedImage(gif.get(), nullptr);
    const int bits = i >= first_local ? 1 + Below(8) : depth;
    if (Below(4) == 0) AddExtension(image, 0xFE, {{1}, Bytes(255, '.'), {2, 0}});
    if (Below(2) == 0) AddExtension(image, 0xF9, {{1, 10, 0, static_cast<uint8_t>(Below(1 << bits))}});
    // The first image covers the screen.
    const int w = i == 0 ? width : 1 + Below(width), h = i == 0 ? height : 1 + Below(height);
    image->ImageDesc = {Below(width - w + 1), Below(height - h + 1), w, h, Below(2) == 0, nullptr};
    if (i >= first_local) image->ImageDesc.ColorMap = RandomColours(bits);
    image->RasterBits = static_cast<GifByteType*>(std::malloc(static_cast<size_t>(w) * h));
    Paint(image->RasterBits, w * h, bits);
  }
  return gif;
}

Bytes WrittenByGiflib(const GifFileType& gif) {
  Bytes bytes;
  const auto append = [](GifFileType* file, const GifByteType* from, int count) {
    static_cast<Bytes*>(file->UserData)->insert(static_cast<Bytes*>(file->UserData)->end(), from, from + count);
    return count;
  };
  GifFileType* file = EGifOpen(&bytes, append, nullptr);
  void* const own = file->Private;
  *file = gif;
  file->UserData = &bytes;
  file->Private = own;
  file->Image.ColorMap = nullptr;
  EXPECT_EQ(EGifSpew(file), GIF_OK);
  return bytes;
}

// What giflib reads from the bytes, written again.
Bytes RewrittenByGiflib(const Bytes& bytes) {
  MyFILE stream = {bytes.data(), static_cast<int64_t>(bytes.size()), 0, nullptr};
  const auto take = [](GifFileType* file, GifByteType* to, int count) {
    ReadBytes(static_cast<MyFILE*>(file->UserData), to, count);
    return count;
  };
  GifFileType* file = DGifOpen(&stream, take, nullptr);
  EXPECT_EQ(DGifSlurp(file), GIF_OK) << GifErrorString(file->Error);
  EXPECT_EQ(stream.position, stream.size);
  Bytes written = WrittenByGiflib(*file);
  DGifCloseFile(file, nullptr);
  return written;
}

// --- Ours --------------------------------------------------------------------------------------------------------

Document Read(const Bytes& bytes) {
  Document gif(NewGif(), DeleteGif);
  MyFILE stream = {bytes.data(), static_cast<int64_t>(bytes.size()), 0, nullptr};
  ReadGif(&stream, gif.get());
  EXPECT_EQ(stream.position, stream.size);
  return gif;
}

Bytes Written(const Gif* gif) {
  char* bytes = nullptr;
  size_t size = 0;
  MyFILE stream = {nullptr, 0, 0, open_memstream(&bytes, &size)};
  WriteGif(&stream, gif);
  std::fclose(stream.file);
  Bytes written(bytes, bytes + size);
  std::free(bytes);
  return written;
}

// The first image, which is what libgd reads. Gives libgd's.
gdImagePtr ExpectLibgdSeesOurPictures(Bytes bytes, LendingHost& host) {
  const Document gif = Read(bytes);
  const auto* block = std::find_if(gif->blocks, gif->blocks + gif->count, [](GifBlock* b) { return b->picture; });
  GifPicture* image = (*block)->picture;
  gdImagePtr seen = gdImageCreateFromGifPtr(static_cast<int>(bytes.size()), bytes.data());
  const auto picture = PictureRef::Adopt(MakePictureFromGifPicture(gif.get(), image));
  const auto mask = PictureRef::Adopt(MakeMaskFromGifPicture(image, FindTransparentIndex(gif.get(), image)));
  const host::Picture& ours = *host.heap().Find<host::Picture>(picture.get());
  const host::Picture& our_mask = *host.heap().Find<host::Picture>(mask.get());
  EXPECT_EQ((std::vector{ours.width(), ours.height()}), (std::vector{gdImageSX(seen), gdImageSY(seen)}));
  int wrong = 0;
  for (int i = 0; i < ours.width() * ours.height(); ++i) {
    const int x = i % ours.width(), y = i / ours.width();
    wrong += ours.pixels().Get(x, y) != (gdImageGetTrueColorPixel(seen, x, y) & 0xFFFFFFu);
    const bool transparent = gdImageGetPixel(seen, x, y) == gdImageGetTransparent(seen);
    wrong += our_mask.pixels().Get(x, y) != (transparent ? 0xFFFFFFu : 0u);
  }
  EXPECT_EQ(wrong, 0);
  return seen;
}

TEST(Peers, AgreeOnWhatEachWrites) {
  LendingHost host;
  const struct {
    int width, height, images, documents;
  } sizes[] = {{1, 1, 1, 20},   {1, 300, 2, 10},   {300, 1, 2, 10},    {7, 9, 5, 40},
               {64, 48, 4, 40}, {320, 200, 3, 30}, {2000, 1000, 1, 3}, {40, 30, 120, 2}};
  for (const auto& size : sizes) {
    for (int i = 0; i < size.documents; ++i) {
      SCOPED_TRACE(testing::Message() << size.width << " x " << size.height << ", document " << i);
      const GiflibDocument gif = RandomDocument(size.width, size.height, size.images);
      const Bytes by_giflib = WrittenByGiflib(*gif), bytes = Written(Read(by_giflib).get());
      EXPECT_TRUE(RewrittenByGiflib(bytes) == by_giflib);
      EXPECT_TRUE(Written(Read(bytes).get()) == bytes);
      gdImagePtr first = ExpectLibgdSeesOurPictures(bytes, host);
      int length = 0;
      auto* by_libgd = static_cast<uint8_t*>(gdImageGifPtr(first, &length));
      gdImageDestroy(ExpectLibgdSeesOurPictures(Bytes(by_libgd, by_libgd + length), host));
      gdFree(by_libgd);
      gdImageDestroy(first);
    }
  }
}

}  // namespace
