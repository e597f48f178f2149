// What records hold that no file gives, and hosts that describe pictures as the script host does not; the rest
// scripts show.

#include "picture/conversion.h"

#include <gd.h>

#include <functional>
#include <vector>

#include "host/picture.h"
#include "host/resolver.h"
#include "picture/picture_editor.h"
#include "platform/core_graphics.h"
#include "plugin/host_reference.h"
#include "tests/support/lending.h"

namespace {

using host::PictureKind;
using Spoil = std::function<void(REALpictureDescription&)>;

// What the host tells of a picture, spoiled: the first `described` times.
int described;
Spoil spoil;
HostBoolean DescribeSpoiled(REALpictureStruct* picture, REALpictureDescription* description, int32_t kind) {
  static CGContext contexts[2];
  static gdImage images[2];
  const auto describe = reinterpret_cast<decltype(&DescribeSpoiled)>(
      reinterpret_cast<void*>(host::FindHostFunction("REALLockPictureDescription")));
  if (described <= 0 || !describe(picture, description, kind)) return 0;
  --described;
  void*& object = description->platform_object;
  if (kind == kPictureKindCGBitmapContext) {
    object = &(contexts[described % 2] = *static_cast<CGContextRef>(object));
  } else {
    object = &(images[described % 2] = *static_cast<gdImage*>(object));
  }
  spoil(*description);
  return 1;
}

CGContext& Context(REALpictureDescription& d) { return *static_cast<CGContextRef>(d.platform_object); }
gdImage& Image(REALpictureDescription& d) { return *static_cast<gdImage*>(d.platform_object); }

class PictureHost : public LendingHost {
 public:
  explicit PictureHost(PictureKind kind = PictureKind::kConsole)
      : LendingHost({.without = {"DrawPicture"}, .pictures = kind, .alpha_info = kCGImageAlphaNoneSkipFirst}) {
    IsDesktop = IsConsole = false;
    described = 1000;
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
  uint8_t* rows[2] = {pixels.data(), pixels.data() + 4};
  GifPalette palette = {4, colours.data()};
  GifPicture image = {};

  SmallImage() {
    image.width = 4;
    image.height = 2;
    image.cmap = &palette;
    image.data = rows;
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
  small.rows[1] = nullptr;
  EXPECT_EQ(host.Pixel(MakePicture(nullptr, &small.image), 3, 1), 0x010203u);  // a missing row is all index 0
  small.image.data = nullptr;
  EXPECT_EQ(host.Pixel(MakeMask(&small.image, 0), 3, 0), 0xFFFFFFu);
  small.image.height = 0;
  EXPECT_FALSE(MakePicture(nullptr, &small.image));
  EXPECT_EQ(LastWidth, 4);
  EXPECT_EQ(LastHeight, 0);  // set before the size is refused
  EXPECT_FALSE(MakePicture(&gif, nullptr) || MakeMask(nullptr, 0));
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
  Gif gif = {{}, nullptr, 8, blocks}, without_blocks = {{}, nullptr, 8, nullptr};
  EXPECT_EQ(FindTransparentIndex(&gif, &image), 5);
  EXPECT_EQ(FindTransparentIndex(&gif, nullptr), -1);  // though a block without an image follows the extension
  EXPECT_EQ(FindTransparentIndex(&without_blocks, &image), -1);
  EXPECT_EQ(FindTransparentIndex(nullptr, &image), -1);
}

TEST(Conversion, TrustsOnlyWhatFits) {
  static int* rows[4] = {};
  static uint8_t* palette_rows[4] = {};
  constexpr PictureKind kContexts = PictureKind::kDesktop, kImages = PictureKind::kConsole;
  const struct {
    const char* what;
    PictureKind kind;
    Spoil spoil;
    bool trusted = false;
  } cases[] = {
      {"alpha info with a flag beside it", kContexts, [](auto& d) { Context(d).alpha_info |= 8; }, true},
      {"context of another kind", kContexts, [](auto& d) { d.kind = kPictureKindGDImage; }},
      {"no context", kContexts, [](auto& d) { d.platform_object = nullptr; }},
      {"no pixels", kContexts, [](auto& d) { Context(d).data = nullptr; }},
      {"short rows", kContexts, [](auto& d) { Context(d).bytes_per_row = 11; }},
      {"overflowing rows", kContexts, [](auto& d) { Context(d).width = SIZE_MAX / 4 + 1; }},
      {"narrower context", kContexts, [](auto& d) { Context(d).width = 2; }},
      {"lower context", kContexts, [](auto& d) { Context(d).height = 3; }},
      {"image of another kind", kImages, [](auto& d) { d.kind = kPictureKindCGBitmapContext; }},
      {"no image", kImages, [](auto& d) { d.platform_object = nullptr; }},
      {"palette image", kImages, [](auto& d) { Image(d).pixels = palette_rows; }},
      {"not true colour", kImages, [](auto& d) { Image(d).trueColor = 0; }},
      {"no rows", kImages, [](auto& d) { Image(d).tpixels = nullptr; }},
      {"rows missing", kImages, [](auto& d) { Image(d).tpixels = rows; }},
      {"image narrower than described", kImages, [](auto& d) { --Image(d).sx; }},
      {"empty description", kImages, [](auto& d) { d.height = 0; }},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    PictureHost host(c.kind);
    spoil = c.spoil;
    PictureWriter writer;
    ASSERT_EQ(writer.NewPictureWriter(3, 4), c.trusted);
    if (!c.trusted) continue;
    writer.WritePixel(10, 20, 30);
    EXPECT_EQ(host.Pixel(PictureRef::Adopt(writer.RenderPictureWriter()), 0, 0), 0x0A141Eu);
  }
}

TEST(Conversion, CopiesMasksWhereNothingDraws) {
  const struct {
    const char* what;
    int described;
    Spoil spoil;
    bool installed = false;
  } cases[] = {
      {"as it should be", 2, [](auto&) {}, true},
      {"first not described", 0, [](auto&) {}},
      {"second not described", 1, [](auto&) {}},
      {"another kind", 2, [](auto& d) { d.kind = kPictureKindCGBitmapContext; }},
      {"no image", 2, [](auto& d) { d.platform_object = nullptr; }},
      {"no rows", 2, [](auto& d) { Image(d).tpixels = nullptr; }},
      {"other widths", 2, [](auto& d) { Image(d).sx += described; }},
      {"other heights", 2, [](auto& d) { Image(d).sy += described; }},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    PictureHost host;
    SmallImage small;
    const PictureRef picture = MakePicture(nullptr, &small.image), mask = MakeMask(&small.image, 6);
    described = c.described;
    spoil = c.spoil;
    AddPictureMask(nullptr, mask.get(), 4, 2);
    AddPictureMask(picture.get(), nullptr, 4, 2);
    AddPictureMask(picture.get(), mask.get(), 0, 2);
    AddPictureMask(picture.get(), mask.get(), 4, 0);
    EXPECT_EQ(described, c.described);
    AddPictureMask(picture.get(), mask.get(), 4, 2);
    const auto installed = PictureRef::Adopt(REALGetPictureMask(picture.get(), 1));
    for (int i = 0; i < 8; ++i) {
      EXPECT_EQ(host.Pixel(installed, i % 4, i / 4), c.installed && i == 6 ? 0xFFFFFFu : 0u);
    }
  }
}

}  // namespace
