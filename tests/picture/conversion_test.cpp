#include "picture/conversion.h"

#include <gd.h>
#include <gtest/gtest.h>

#include <vector>

#include "tests/picture/fake_host.h"

namespace {

constexpr uint32_t kBlack = 0x000000FF, kWhite = 0xFFFFFFFF;  // on a desktop host

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

// What no file gives, but documents put together in memory may.
TEST(Conversion, ChoosesThePaletteThatHasEntries) {
  std::vector<Colour> nines(256, Colour{0, 9, 9, 9});
  GifPalette full = {256, nines.data()}, empty = {0, nullptr}, without_array = {4, nullptr},
             overfull = {1000, nines.data()};
  GifScreen screen = {};
  Gif gif = {}, bare = {};
  gif.screen = &screen;
  const struct {
    const char* what;
    Gif* gif;
    GifPalette *global, *local;
    bool made;
    uint32_t at5 = 0;  // the pixel of index 5
  } cases[] = {
      {"global", &gif, &full, nullptr, true, 0x090909FF},
      {"global for an empty one", &gif, &full, &empty, true, 0x090909FF},
      {"more entries than indexes", &gif, &overfull, nullptr, true, 0x090909FF},
      {"entries without an array", &gif, &full, &without_array, true, kBlack},
      {"own without a document", nullptr, nullptr, &full, true, 0x090909FF},
      {"both empty", &gif, &empty, &empty, false},
      {"no document", nullptr, nullptr, nullptr, false},
      {"no screen", &bare, nullptr, nullptr, false},
      {"no global table", &gif, nullptr, nullptr, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    FakeHost host(DesktopHost());
    LastWidth = LastHeight = -1;
    SmallImage small;
    small.image.cmap = c.local;
    screen.cmap = c.global;
    REALpictureStruct* picture = MakePictureFromGifPicture(c.gif, &small.image);
    ASSERT_EQ(picture != nullptr, c.made);
    EXPECT_EQ(LastWidth, c.made ? 4 : -1);
    EXPECT_EQ(LastHeight, c.made ? 2 : -1);
    EXPECT_EQ(picture ? BytesAt(picture, 1, 1) : 0, c.at5);
    EXPECT_TRUE(host.IsBalancedWithout({picture}));
  }
}

TEST(Conversion, SurvivesImagesThatAreNotWhole) {
  FakeHost host(DesktopHost());
  EXPECT_EQ(MakePictureFromGifPicture(nullptr, nullptr), nullptr);
  EXPECT_EQ(MakeMaskFromGifPicture(nullptr, 0), nullptr);
  SmallImage small;
  small.rows[1] = nullptr;
  REALpictureStruct* picture = MakePictureFromGifPicture(nullptr, &small.image);
  EXPECT_EQ(BytesAt(picture, 3, 1), 0x010203FFu);  // a missing row is all index 0
  small.image.data = nullptr;
  REALpictureStruct* mask = MakeMaskFromGifPicture(&small.image, 0);
  EXPECT_EQ(BytesAt(mask, 3, 0), kWhite);
  EXPECT_TRUE(host.IsBalancedWithout({picture, mask}));
  small.image.height = 0;
  EXPECT_EQ(MakePictureFromGifPicture(nullptr, &small.image), nullptr);
  EXPECT_EQ(LastHeight, 0);  // set before the size is refused
}

TEST(Conversion, LooksForTheTransparentIndexThroughGaps) {
  uint8_t bytes[] = {1, 0, 0, 5};
  GifData without_bytes = {4, nullptr}, data = {4, bytes};
  GifData* list[] = {nullptr, &without_bytes, &data};
  GifExtension extension = {0xF9, 3, list}, without_data = {0xF9, 3, nullptr};
  GifPicture image = {}, other = {};
  GifBlock empty = {}, before = {0, nullptr, &extension}, damaged = {0, nullptr, &without_data};
  GifBlock block = {0, &image, nullptr}, elsewhere = {0, &other, nullptr};
  GifBlock* blocks[] = {nullptr, &block, &damaged, &block, &before, &empty, &before, &block, &elsewhere};
  Gif gif = {{}, nullptr, 9, blocks}, without_blocks = {{}, nullptr, 9, nullptr};
  EXPECT_EQ(FindTransparentIndex(&gif, &image), 5);
  EXPECT_EQ(FindTransparentIndex(&gif, &other), -1);
  EXPECT_EQ(FindTransparentIndex(&gif, nullptr), -1);  // though a block without an image follows the extension
  EXPECT_EQ(FindTransparentIndex(&without_blocks, &image), -1);
  EXPECT_EQ(FindTransparentIndex(nullptr, &image), -1);
}

// The steps of a whole conversion, with everything that it made.
struct Conversion {
  REALpictureStruct* picture;
  REALpictureStruct* mask;

  explicit Conversion(SmallImage& small)
      : picture(MakePictureFromGifPicture(nullptr, &small.image)), mask(MakeMaskFromGifPicture(&small.image, 6)) {}
};

gdImage& Image(REALpictureDescription& d) { return *static_cast<gdImage*>(d.platform_object); }

TEST(Conversion, InstallsMasksByDrawingElseByCopying) {
  using Calls = std::vector<std::string>;
  const Calls drawn = {"DrawPicture"}, refused = {"lock image"};
  const Calls half = {"lock image", "lock image", "unlock", "clear cache"};
  const Calls copied = {"lock image", "lock image", "unlock", "unlock", "clear cache"};
  const HostOptions desktop = DesktopHost(), console = ConsoleHost();
  const struct {
    const char* what;
    HostOptions host;
    bool installed;
    Calls calls;  // after the mask picture was made
    int descriptions = 9;
    std::function<void(REALpictureDescription&)> spoil = {};
  } cases[] = {
      {"desktop draws", desktop, true, drawn},
      {"console draws", console, true, drawn},
      {"desktop cannot copy", desktop, false, refused},
      {"console copies", console, true, copied},
      {"first not described", console, false, refused, 0},
      {"second not described", console, false, half, 1},
      {"another kind", console, false, copied, 9, [](auto& d) { d.kind = 8; }},
      {"no image", console, false, copied, 9, [](auto& d) { d.platform_object = nullptr; }},
      {"no rows", console, false, copied, 9, [](auto& d) { Image(d).tpixels = nullptr; }},
      {"other widths", console, false, copied, 9,
       [](auto& d) {
         static int n;
         Image(d).sx += n++;
       }},
      {"other heights", console, false, copied, 9,
       [](auto& d) {
         static int n;
         Image(d).sy += n++;
       }},
      {"negative height", console, false, copied, 9, [](auto& d) { Image(d).sy = -1; }},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    FakeHost host(c.host);
    SmallImage small;
    const Conversion made(small);
    host.options.draws = c.calls == drawn;
    host.options.descriptions = c.descriptions;
    host.options.spoil = c.spoil;
    host.calls.clear();
    AddPictureMask(nullptr, made.mask, 4, 2);
    AddPictureMask(made.picture, nullptr, 4, 2);
    AddPictureMask(made.picture, made.mask, 0, 2);
    AddPictureMask(made.picture, made.mask, 4, 0);
    EXPECT_TRUE(host.calls.empty());
    AddPictureMask(made.picture, made.mask, 4, 2);
    EXPECT_EQ(Calls(host.calls.begin() + 1, host.calls.end()), c.calls);
    for (int i = 0; i < 8; ++i) {
      EXPECT_EQ(BytesAt(MaskOf(made.picture), i % 4, i / 4) == BytesAt(made.mask, i % 4, i / 4), c.installed);
    }
    EXPECT_TRUE(host.IsBalancedWithout({made.picture, made.mask}));
  }
}

TEST(Conversion, OutlivesEachMissingHostFunction) {
  const struct {
    const char* name;
    bool makes_pictures, can_balance = true;
  } functions[] = {
      {"newPicture", false},
      {"REALLockObject", false},
      {"REALUnlockObject", true, false},
      {"PluginPictureGetType", true},
      {"pluginObjectType", true},
      {"REALLockPictureDescription", false},
      {"unlockPictureDescription", true, false},
      {"REALPictureClearCache", true},
      {"REALGetPictureMask", true},
      {"pluginPictureGraphicsGetter", true},
      {"REALLoadObjectMethod", true},
  };
  for (const auto& function : functions) {
    for (HostOptions options : {DesktopHost(), ConsoleHost()}) {
      SCOPED_TRACE(function.name + (", " + options.application_class));
      options.missing = function.name;
      FakeHost host(options);
      SmallImage small;
      const Conversion made(small);
      EXPECT_EQ(made.picture != nullptr, function.makes_pictures);
      EXPECT_EQ(made.mask != nullptr, function.makes_pictures);
      AddPictureMask(made.picture, made.mask, 4, 2);
      EXPECT_EQ(host.IsBalancedWithout({made.picture, made.mask}), function.can_balance);
    }
  }
}

}  // namespace
