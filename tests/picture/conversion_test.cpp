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

TEST(Conversion, ChoosesThePaletteThatHasEntries) {
  std::vector<Colour> global_colours(256, Colour{0, 9, 9, 9});
  GifPalette full = {256, global_colours.data()}, empty = {0, nullptr}, without_array = {4, nullptr};
  GifPalette overfull = {1000, global_colours.data()};
  GifScreen screen = {}, no_table = {};
  Gif gif = {}, bare = {}, without_table = {};
  gif.screen = &screen;
  without_table.screen = &no_table;
  const struct {
    const char* what;
    Gif* gif;
    GifPalette* global;
    GifPalette* local;  // null with `own` false
    bool own;
    bool made;
    uint32_t at1, at5;  // the pixels of index 1 and index 5
  } cases[] = {
      {"own", &gif, &full, nullptr, true, true, 0x0B0C0DFF, kBlack},
      {"own, no document", nullptr, nullptr, nullptr, true, true, 0x0B0C0DFF, kBlack},
      {"global", &gif, &full, nullptr, false, true, 0x090909FF, 0x090909FF},
      {"global for an empty one", &gif, &full, &empty, false, true, 0x090909FF, 0x090909FF},
      {"more entries than indexes", &gif, &overfull, nullptr, false, true, 0x090909FF, 0x090909FF},
      {"entries without an array", &gif, &full, &without_array, false, true, kBlack, kBlack},
      {"both empty", &gif, &empty, &empty, false, false, 0, 0},
      {"no document", nullptr, nullptr, nullptr, false, false, 0, 0},
      {"no screen", &bare, nullptr, nullptr, false, false, 0, 0},
      {"no global table", &without_table, nullptr, nullptr, false, false, 0, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    FakeHost host(DesktopHost());
    LastWidth = LastHeight = -1;
    SmallImage small;
    if (!c.own) small.image.cmap = c.local;
    screen.cmap = c.global;
    REALpictureStruct* picture = MakePictureFromGifPicture(c.gif, &small.image);
    ASSERT_EQ(picture != nullptr, c.made);
    EXPECT_EQ(LastWidth, c.made ? 4 : -1);
    EXPECT_EQ(LastHeight, c.made ? 2 : -1);
    if (c.made) {
      EXPECT_EQ(host.Bytes(picture, 1, 0), c.at1);
      EXPECT_EQ(host.Bytes(picture, 1, 1), c.at5);
    }
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
  EXPECT_EQ(host.Bytes(picture, 3, 1), 0x010203FFu);  // a missing row is all index 0
  EXPECT_TRUE(host.IsBalancedWithout({picture}));
  small.image.data = nullptr;
  REALpictureStruct* mask = MakeMaskFromGifPicture(&small.image, 0);
  EXPECT_EQ(host.Bytes(mask, 3, 0), kWhite);
  EXPECT_TRUE(host.IsBalancedWithout({mask}));
  small.image.height = 0;
  EXPECT_EQ(MakePictureFromGifPicture(nullptr, &small.image), nullptr);
  EXPECT_EQ(LastHeight, 0);  // set before the size is refused
}

TEST(Conversion, FindsTheTransparentIndexBeforeTheImage) {
  using SubBlocks = std::vector<std::vector<uint8_t>>;
  const struct {
    const char* what;
    SubBlocks before;
    int index;
    int32_t marker = 0xF9;
  } cases[] = {
      {"flag set", {{1, 0, 0, 5}}, 5},
      {"flag clear", {{0, 0, 0, 5}}, -1},
      {"other flags", {{0xFE, 0, 0, 5}}, -1},
      {"second sub-block", {{0, 0, 0, 3}, {1, 0, 0, 9}}, 9},
      {"first of two", {{1, 0, 0, 3}, {1, 0, 0, 9}}, 3},
      {"any label", {{'C', 'o', 'm', 0xFF}}, 0xFF, 0xFE},
      {"short one passed over", {{1, 0, 0}, {3, 0, 0, 200, 1}}, 200},
      {"empty", {{}}, -1},
      {"none", {}, -1},
  };
  for (const auto& c : cases) {
    SubBlocks bytes = c.before;
    std::vector<GifData> data;
    for (auto& b : bytes) data.push_back({static_cast<int32_t>(b.size()), b.empty() ? nullptr : b.data()});
    std::vector<GifData*> list = {nullptr};
    for (auto& d : data) list.push_back(&d);
    GifExtension extension = {c.marker, static_cast<int32_t>(list.size()), list.data()};
    GifPicture image = {}, other = {};
    GifBlock before = {0, nullptr, &extension}, block = {0, &image, nullptr}, elsewhere = {0, &other, nullptr};
    GifBlock* blocks[] = {nullptr, &before, &block, &elsewhere, &block};
    Gif gif = {{}, nullptr, 5, blocks};
    EXPECT_EQ(FindTransparentIndex(&gif, &image), c.index) << c.what;
    EXPECT_EQ(FindTransparentIndex(&gif, &other), -1) << c.what;  // the extension is not just before it
    EXPECT_EQ(FindTransparentIndex(&gif, nullptr), -1) << c.what;
    gif.count = 2;
    EXPECT_EQ(FindTransparentIndex(&gif, &image), -1) << c.what;
  }
  EXPECT_EQ(FindTransparentIndex(nullptr, nullptr), -1);
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
  const struct {
    const char* what;
    HostOptions host;
    bool draws;
    int descriptions;
    std::function<void(REALpictureDescription&)> spoil;
    bool installed;
    std::vector<std::string> calls;  // after the mask picture was made
  } cases[] = {
      {"desktop draws", DesktopHost(), true, 9, {}, true, {"DrawPicture"}},
      {"console draws", ConsoleHost(), true, 9, {}, true, {"DrawPicture"}},
      {"desktop cannot copy", DesktopHost(), false, 9, {}, false, {"lock image"}},
      {"console copies", ConsoleHost(), false, 9, {}, true, {"lock image", "lock image", "REALPictureClearCache"}},
      {"first not described", ConsoleHost(), false, 0, {}, false, {"lock image"}},
      {"second not described",
       ConsoleHost(),
       false,
       1,
       {},
       false,
       {"lock image", "lock image", "REALPictureClearCache"}},
      {"other kind",
       ConsoleHost(),
       false,
       9,
       [](auto& d) { d.kind = 8; },
       false,
       {"lock image", "lock image", "REALPictureClearCache"}},
      {"other widths",
       ConsoleHost(),
       false,
       9,
       [](auto& d) {
         static int n;
         Image(d).sx += n++;
       },
       false,
       {"lock image", "lock image", "REALPictureClearCache"}},
      {"other heights",
       ConsoleHost(),
       false,
       9,
       [](auto& d) {
         static int n;
         Image(d).sy += n++;
       },
       false,
       {"lock image", "lock image", "REALPictureClearCache"}},
      {"no rows",
       ConsoleHost(),
       false,
       9,
       [](auto& d) { Image(d).tpixels = nullptr; },
       false,
       {"lock image", "lock image", "REALPictureClearCache"}},
      {"no image",
       ConsoleHost(),
       false,
       9,
       [](auto& d) { d.platform_object = nullptr; },
       false,
       {"lock image", "lock image", "REALPictureClearCache"}},
      {"negative height",
       ConsoleHost(),
       false,
       9,
       [](auto& d) { Image(d).sy = -1; },
       false,
       {"lock image", "lock image", "REALPictureClearCache"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    FakeHost host(c.host);
    SmallImage small;
    const Conversion made(small);
    host.options.draws = c.draws;
    host.options.descriptions = c.descriptions;
    host.options.spoil = c.spoil;
    host.calls.clear();
    AddPictureMask(made.picture, made.mask, 4, 2);
    ASSERT_EQ(host.calls.front(), "newPicture");
    host.calls.erase(host.calls.begin());
    EXPECT_EQ(host.calls, c.calls);
    for (int i = 0; i < 8; ++i) {
      const bool equal = host.Bytes(host.MaskOf(made.picture), i % 4, i / 4) == host.Bytes(made.mask, i % 4, i / 4);
      EXPECT_EQ(equal, c.installed) << "pixel " << i;
    }
    host.calls.clear();
    AddPictureMask(nullptr, made.mask, 4, 2);
    AddPictureMask(made.picture, nullptr, 4, 2);
    AddPictureMask(made.picture, made.mask, 0, 2);
    AddPictureMask(made.picture, made.mask, 4, 0);
    EXPECT_TRUE(host.calls.empty());
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
