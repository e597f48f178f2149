// What records hold that no file gives, and hosts that describe pictures as the script host does not; the rest
// scripts show.

#include "picture/conversion.h"

#include <gd.h>

#include <functional>
#include <vector>

#include "bridge/host_reference.h"
#include "host/functions/host_functions.h"
#include "host/host/picture.h"
#include "picture/picture_editor.h"
#include "platform/frameworks.h"
#include "tests/support/lending.h"

namespace {

// The plugin knows libgd's record by its beginning alone.
static_assert(offsetof(gdImage, pixels) == offsetof(REALgdImage, pixels));
static_assert(offsetof(gdImage, sx) == offsetof(REALgdImage, sx) &&
              offsetof(gdImage, sy) == offsetof(REALgdImage, sy));
static_assert(offsetof(gdImage, trueColor) == offsetof(REALgdImage, trueColor));
static_assert(offsetof(gdImage, tpixels) == offsetof(REALgdImage, tpixels));

using host::PictureKind;
using Spoil = std::function<void(REALpictureDescription&)>;

// What the host tells of a picture, spoiled: in copies, of which two can be in use.
Spoil spoil;
int turn = 0;
HostBoolean DescribeSpoiled(REALpictureStruct* picture, REALpictureDescription* description, int32_t kind) {
  static CGContext contexts[2];
  static gdImage images[2];
  const auto describe = reinterpret_cast<decltype(&DescribeSpoiled)>(
      reinterpret_cast<void*>(host::FindHostFunction("REALLockPictureDescription")));
  if (!describe(picture, description, kind)) return 0;
  turn = 1 - turn;
  void*& object = description->platform_object;
  if (kind == kPictureKindCGBitmapContext) {
    object = &(contexts[turn] = *static_cast<CGContextRef>(object));
  } else {
    object = &(images[turn] = *static_cast<gdImage*>(object));
  }
  spoil(*description);
  return 1;
}

CGContext& Context(REALpictureDescription& d) { return *static_cast<CGContextRef>(d.platform_object); }
gdImage& Image(REALpictureDescription& d) { return *static_cast<gdImage*>(d.platform_object); }

// The image's rows, of which all but the first are missing.
int** FirstRow(const gdImage& image) {
  static int* rows[4];
  rows[0] = image.tpixels[0];
  return rows;
}

host::HostOptions OptionsFor(PictureKind kind) {
  host::HostOptions options;
  options.without = {"DrawPicture"};
  options.pictures = kind;
  options.alpha_info = kCGImageAlphaNoneSkipFirst;
  return options;
}

class PictureHost : public LendingHost {
 public:
  explicit PictureHost(PictureKind kind = PictureKind::kConsole) : LendingHost(OptionsFor(kind)) {
    IsDesktop = IsConsole = false;
    spoil = [](auto&) {};
    Lend("REALLockPictureDescription", DescribeSpoiled);
  }
  // 0xRRGGBB
  uint32_t Pixel(const PictureRef& picture, int x, int y) {
    return heap().Find<host::Picture>(picture.get())->pixels().Get(x, y);
  }
};

// Two rows of four pixels: indexes 0 to 3, then 4 to 7.
struct SmallImage {
  std::vector<Colour> colours = {{0, 1, 2, 3}, {0, 11, 12, 13}, {0, 21, 22, 23}, {0, 31, 32, 33}};
  std::vector<uint8_t> pixels = {0, 1, 2, 3, 4, 5, 6, 7};
  GifPalette palette = {4, colours.data()};
  GifPicture image = {};

  SmallImage() {
    image.width = 4;
    image.height = 2;
    image.cmap = &palette;
    image.pixels = pixels.data();
    image.pixel_count = 8;
  }
};

PictureRef MakePicture(Gif* gif, GifPicture* image) {
  return PictureRef::Adopt(MakePictureFromGifPicture(gif, image));
}
PictureRef MakeMask(GifPicture* image, int index) { return PictureRef::Adopt(MakeMaskFromGifPicture(image, index)); }

TEST(Conversion, SurvivesRecordsThatAreNotWhole) {
  PictureHost host;
  std::vector<Colour> nines(1000, Colour{0, 9, 9, 9});
  GifPalette overfull = {1000, nines.data()}, without_array = {4, nullptr};
  GifScreen screen = {};
  Gif gif = {}, bare = {};
  screen.cmap = &overfull;
  gif.screen = &screen;
  SmallImage small;
  small.image.cmap = nullptr;
  EXPECT_EQ(host.Pixel(MakePicture(&gif, &small.image), 1, 1), 0x090909u);
  for (Gif* missing : {&gif, &bare, static_cast<Gif*>(nullptr)}) {
    screen.cmap = nullptr;
    EXPECT_FALSE(MakePicture(missing, &small.image));
  }
  small.image.cmap = &without_array;
  EXPECT_EQ(host.Pixel(MakePicture(&gif, &small.image), 1, 1), 0u);

  small.image.cmap = &small.palette;
  small.image.pixel_count = 4;
  EXPECT_EQ(host.Pixel(MakePicture(nullptr, &small.image), 3, 1), 0x010203u);  // a missing row is all index 0
  small.image.pixel_count = 0;
  EXPECT_EQ(host.Pixel(MakeMask(&small.image, 0), 3, 0), 0xFFFFFFu);
  small.image.height = 0;
  EXPECT_FALSE(MakePicture(nullptr, &small.image));
  EXPECT_EQ(LastWidth, 4);
  EXPECT_EQ(LastHeight, 0);  // set before the size is refused
  EXPECT_FALSE(MakePicture(&gif, nullptr));
  EXPECT_FALSE(MakeMask(nullptr, 0));
}

TEST(Conversion, LooksForTheTransparentIndexThroughGaps) {
  uint8_t bytes[] = {1, 0, 0, 5};
  GifData without_bytes = {4, nullptr}, data = {4, bytes};
  GifData* list[] = {nullptr, &without_bytes, &data};
  GifExtension extension = {0xF9, 3, list}, without_data = {0xF9, 3, nullptr};
  GifPicture image = {};
  GifBlock empty = {}, before = {0, nullptr, &extension}, damaged = {0, nullptr, &without_data};
  GifBlock block = {0, &image, nullptr};
  GifBlock* blocks[] = {nullptr, &block, &damaged, &block, &before, &empty, &before, &block};
  Gif gif = {{}, nullptr, 8, blocks};
  EXPECT_EQ(FindTransparentIndex(&gif, &image), 5);
  EXPECT_EQ(FindTransparentIndex(&gif, nullptr), -1);  // though a block without an image follows the extension
  gif.blocks = nullptr;
  EXPECT_EQ(FindTransparentIndex(&gif, &image), -1);
  EXPECT_EQ(FindTransparentIndex(nullptr, &image), -1);
}

TEST(Conversion, TrustsOnlyWhatFits) {
  static int *rows[4] = {}, *some[4] = {};
  static uint8_t* palette_rows[4] = {};
  constexpr PictureKind kContexts = PictureKind::kDesktop, kImages = PictureKind::kConsole;
  const struct {
    const char* what;
    PictureKind kind;
    Spoil spoil;
    int rows = 0;  // that are written, 0 when it is refused
  } cases[] = {
      {"alpha info with a flag beside it", kContexts, [](auto& d) { Context(d).alpha_info |= 8; }, 4},
      {"context of another kind", kContexts, [](auto& d) { d.kind = kPictureKindGDImage; }},
      {"no context", kContexts, [](auto& d) { d.platform_object = nullptr; }},
      {"no pixels", kContexts, [](auto& d) { Context(d).data = nullptr; }},
      {"short rows", kContexts, [](auto& d) { Context(d).bytes_per_row = 11; }},
      {"overflowing rows", kContexts, [](auto& d) { Context(d).width = SIZE_MAX / 4 + 1; }},
      {"narrower context", kContexts, [](auto& d) { Context(d).width = 2; }},
      {"lower context", kContexts, [](auto& d) { Context(d).height = 3; }, 3},
      {"context without rows", kContexts, [](auto& d) { Context(d).height = 0; }},
      {"image of another kind", kImages, [](auto& d) { d.kind = kPictureKindCGBitmapContext; }},
      {"no image", kImages, [](auto& d) { d.platform_object = nullptr; }},
      {"palette image", kImages, [](auto& d) { Image(d).pixels = palette_rows; }},
      {"not true colour", kImages, [](auto& d) { Image(d).trueColor = 0; }},
      {"no rows", kImages, [](auto& d) { Image(d).tpixels = nullptr; }},
      {"rows missing", kImages, [](auto& d) { Image(d).tpixels = rows; }},
      {"a row missing behind those in use", kImages,
       [](auto& d) { std::copy_n(Image(d).tpixels, d.height = 3, some), Image(d).tpixels = some; }, 3},
      {"image narrower than described", kImages, [](auto& d) { --Image(d).sx; }},
      {"empty description", kImages, [](auto& d) { d.height = 0; }},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    PictureHost host(c.kind);
    spoil = c.spoil;
    PictureWriter writer;
    ASSERT_EQ(writer.NewPictureWriter(3, 4), c.rows > 0);
    if (c.rows == 0) continue;
    for (uint8_t y = 0; y < 4; ++y, writer.NextRow()) writer.WritePixel(10, 20, y);
    const auto written = PictureRef::Adopt(writer.RenderPictureWriter());
    EXPECT_EQ(host.Pixel(written, 0, 0),
              c.rows == 4 ? 0x0A1400u : 0x0A1403u);  // rows behind the last go to the first
    EXPECT_EQ(host.Pixel(written, 0, 2), 0x0A1402u);
    EXPECT_EQ(host.Pixel(written, 0, 3) == 0x0A1403u, c.rows == 4);
  }
}

TEST(Conversion, CopiesMasksWhereNothingDraws) {
  static uint8_t* palette_rows[4] = {};
  const struct {
    const char* what;
    Spoil spoil;
    bool installed = false;
  } cases[] = {
      {"as it should be", [](auto&) {}, true},
      {"another kind", [](auto& d) { d.kind = kPictureKindCGBitmapContext; }},
      {"no image", [](auto& d) { d.platform_object = nullptr; }},
      {"no rows", [](auto& d) { Image(d).tpixels = nullptr; }},
      {"no rows in one", [](auto& d) { Image(d).tpixels = turn ? nullptr : Image(d).tpixels; }},
      {"no rows in the other", [](auto& d) { Image(d).tpixels = turn ? Image(d).tpixels : nullptr; }},
      {"rows missing in one", [](auto& d) { Image(d).tpixels = turn ? FirstRow(Image(d)) : Image(d).tpixels; }},
      {"rows missing in the other", [](auto& d) { Image(d).tpixels = turn ? Image(d).tpixels : FirstRow(Image(d)); }},
      {"a palette in one", [](auto& d) { Image(d).pixels = turn ? palette_rows : nullptr; }},
      {"a palette in the other", [](auto& d) { Image(d).pixels = turn ? nullptr : palette_rows; }},
      {"other widths", [](auto& d) { Image(d).sx += turn; }},
      {"other heights", [](auto& d) { Image(d).sy += turn; }},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    PictureHost host;
    SmallImage small;
    const PictureRef picture = MakePicture(nullptr, &small.image), mask = MakeMask(&small.image, 6);
    spoil = c.spoil;
    AddPictureMask(picture.get(), mask.get(), 4, 0);  // nothing
    AddPictureMask(picture.get(), mask.get(), 0, 2);
    AddPictureMask(picture.get(), nullptr, 4, 2);
    AddPictureMask(nullptr, mask.get(), 4, 2);
    const auto installed = PictureRef::Adopt(REALGetPictureMask(picture.get(), 1));
    EXPECT_EQ(host.Pixel(installed, 2, 1), 0u);
    AddPictureMask(picture.get(), mask.get(), 4, 2);
    EXPECT_EQ(host.Pixel(installed, 2, 1), c.installed ? 0xFFFFFFu : 0u);
    EXPECT_EQ(host.Pixel(installed, 1, 1), 0u);
  }
}

}  // namespace
