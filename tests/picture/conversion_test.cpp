// What records hold that no file gives, and what hosts do that the script host does not; the rest scripts show.

#include "picture/conversion.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/picture/fake_host.h"

namespace {

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
    uint32_t at5;  // the pixel of index 5; 0: no picture
  } cases[] = {
      {"global for an empty one", &gif, &full, &empty, 0x090909FF},
      {"more entries than indexes", &gif, &overfull, nullptr, 0x090909FF},
      {"entries without an array", &gif, &full, &without_array, 0x000000FF},
      {"both empty", &gif, &empty, &empty, 0},
      {"no document", nullptr, nullptr, nullptr, 0},
      {"no screen", &bare, nullptr, nullptr, 0},
      {"no global table", &gif, nullptr, nullptr, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    FakeHost host({});
    LastWidth = LastHeight = -1;
    SmallImage small;
    small.image.cmap = c.local;
    screen.cmap = c.global;
    REALpictureStruct* picture = MakePictureFromGifPicture(c.gif, &small.image);
    EXPECT_EQ(picture ? BytesAt(picture, 1, 1) : 0, c.at5);
    EXPECT_EQ(LastWidth, picture ? 4 : -1);
    EXPECT_EQ(LastHeight, picture ? 2 : -1);
    EXPECT_TRUE(host.IsBalancedWithout({picture}));
  }
}

TEST(Conversion, SurvivesImagesThatAreNotWhole) {
  FakeHost host({});
  EXPECT_EQ(MakePictureFromGifPicture(nullptr, nullptr), nullptr);
  EXPECT_EQ(MakeMaskFromGifPicture(nullptr, 0), nullptr);
  SmallImage small;
  small.rows[1] = nullptr;
  REALpictureStruct* picture = MakePictureFromGifPicture(nullptr, &small.image);
  EXPECT_EQ(BytesAt(picture, 3, 1), 0x010203FFu);  // a missing row is all index 0
  small.image.data = nullptr;
  REALpictureStruct* mask = MakeMaskFromGifPicture(&small.image, 0);
  EXPECT_EQ(BytesAt(mask, 3, 0), 0xFFFFFFFFu);
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

TEST(Conversion, CopiesMasksWhereNothingDraws) {
  const char* const kCopied = "new image image unlock unlock clear ";
  const struct {
    const char* what;
    const char* calls = "new image image unlock unlock clear ";
    int descriptions = 9;
    std::function<void(REALpictureDescription&)> spoil = [](auto&) {};
    bool installed = false;
  } cases[] = {
      {.what = "console", .installed = true},
      {"first not described", "new image ", 0},
      {"second not described", "new image image unlock clear ", 1},
      {"another kind", kCopied, 9, [](auto& d) { d.kind = kPictureKindCGBitmapContext; }},
      {"no image", kCopied, 9, [](auto& d) { d.platform_object = nullptr; }},
      {"no rows", kCopied, 9, [](auto& d) { Image(d).tpixels = nullptr; }},
      {"other widths", kCopied, 9, [n = 0](auto& d) mutable { Image(d).sx += n++; }},
      {"other heights", kCopied, 9, [n = 0](auto& d) mutable { Image(d).sy += n++; }},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    FakeHost host({.contexts = false});
    SmallImage small;
    REALpictureStruct* picture = MakePictureFromGifPicture(nullptr, &small.image);
    REALpictureStruct* mask = MakeMaskFromGifPicture(&small.image, 6);
    host.options.descriptions = c.descriptions;
    host.options.spoil = c.spoil;
    host.calls.clear();
    AddPictureMask(nullptr, mask, 4, 2);
    AddPictureMask(picture, nullptr, 4, 2);
    AddPictureMask(picture, mask, 0, 2);
    AddPictureMask(picture, mask, 4, 0);
    EXPECT_EQ(host.calls, "");
    AddPictureMask(picture, mask, 4, 2);
    EXPECT_EQ(host.calls, c.calls);
    auto* installed = reinterpret_cast<REALpictureStruct*>(Of(picture).mask);
    for (int i = 0; i < 8; ++i) {
      EXPECT_EQ(BytesAt(installed, i % 4, i / 4) == BytesAt(mask, i % 4, i / 4), c.installed);
    }
    EXPECT_TRUE(host.IsBalancedWithout({picture, mask}));
  }
}

}  // namespace
