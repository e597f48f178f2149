#include "picture/picture_editor.h"

#include <gtest/gtest.h>

#include "tests/picture/fake_host.h"

namespace {

TEST(PictureEditor, StoresEachFormatsBytes) {
  const struct {
    HostOptions host;
    uint32_t bytes;  // of red 10, green 20, blue 30
  } cases[] = {
      {{.alpha_info = 1}, 0x0A141EFF},   {{.alpha_info = 2}, 0xFF0A141E}, {{.alpha_info = 3}, 0x0A141EFF},
      {{.alpha_info = 4}, 0xFF0A141E},   {{.alpha_info = 5}, 0x0A141EFF}, {{.alpha_info = 6}, 0xFF0A141E},
      {{.alpha_info = 14}, 0xFF0A141E},   // 6 with another flag beside it
      {{.padding = 5}, 0x0A141EFF},       // rows that are not aligned
      {{.contexts = false}, 0x1E140A00},  // the int 0x000A141E
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::to_string(c.host.contexts) + ", alpha info " + std::to_string(c.host.alpha_info));
    FakeHost host(c.host);
    PictureWriter writer;
    ASSERT_TRUE(writer.NewPictureWriter(3, 2));
    for (int row = 0; row < 2; ++row, writer.NextRow()) {
      for (int x = 0; x < 3; ++x) writer.WritePixel(10, 20, 30);
    }
    writer.WritePixel(0, 0, 0);  // past the last row: row 0 again
    host.calls.clear();
    REALpictureStruct* picture = writer.RenderPictureWriter();
    EXPECT_EQ(host.calls, "clear unlock clear ");
    EXPECT_EQ(BytesAt(picture, 0, 0) & 0x00FFFF00, 0u);
    for (int i = 1; i < 6; ++i) EXPECT_EQ(BytesAt(picture, i % 3, i / 3), c.bytes) << "pixel " << i;
    EXPECT_EQ(writer.RenderPictureWriter(), nullptr);
    EXPECT_TRUE(host.IsBalancedWithout({picture}));
  }
}

TEST(PictureEditor, AsksTheHostForSizesFrom1To32767Only) {
  const struct {
    long long width, height;
    bool asked;
  } cases[] = {{0, 10, false},    {10, 0, false},    {-1, 1, false},
               {32768, 1, false}, {1, 32768, false}, {1LL << 32 | 1, 1, false},
               {32767, 1, true},  {1, 32767, true}};
  for (const auto& c : cases) {
    FakeHost host({});
    PictureWriter writer;
    EXPECT_EQ(writer.NewPictureWriter(c.width, c.height), c.asked) << c.width << " by " << c.height;
    EXPECT_EQ(host.calls.empty(), !c.asked);
    writer.ReleasePicture();
    EXPECT_TRUE(host.IsBalancedWithout({}));
  }
}

TEST(PictureEditor, RefusesDescriptionsThatItCannotTrust) {
  static uint8_t* palette_rows[4] = {};
  const struct {
    const char* what;
    bool contexts;
    std::function<void(REALpictureDescription&)> spoil;
  } cases[] = {
      {"context of another kind", true, [](auto& d) { d.kind = kPictureKindGDImage; }},
      {"no pixels", true, [](auto& d) { Context(d).data = nullptr; }},
      {"short rows", true, [](auto& d) { Context(d).bytes_per_row = 11; }},
      {"overflowing rows", true, [](auto& d) { Context(d).width = SIZE_MAX / 4 + 1; }},
      {"narrower context", true, [](auto& d) { Context(d).width = 2; }},
      {"lower context", true, [](auto& d) { Context(d).height = 3; }},
      {"image of another kind", false, [](auto& d) { d.kind = kPictureKindCGBitmapContext; }},
      {"palette image", false, [](auto& d) { Image(d).pixels = palette_rows; }},
      {"not true colour", false, [](auto& d) { Image(d).trueColor = 0; }},
      {"no rows", false, [](auto& d) { Image(d).tpixels = nullptr; }},
      {"a row missing", false, [](auto& d) { Image(d).tpixels[3] = nullptr; }},
      {"image narrower than described", false, [](auto& d) { --Image(d).sx; }},
      {"empty description", false, [](auto& d) { d.height = 0; }},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    FakeHost host({.contexts = c.contexts, .spoil = c.spoil});
    PictureWriter writer;
    EXPECT_FALSE(writer.NewPictureWriter(3, 4));
    EXPECT_TRUE(host.calls.starts_with("new "));
    writer.ReleasePicture();
    EXPECT_TRUE(host.IsBalancedWithout({}));
  }
}

// Where no class tells what it is, the host's first answer does.
TEST(PictureEditor, FindsOutTheKindOfHostOnce) {
  const struct {
    const char* application;
    const char *first, *second;  // what the host is asked for
  } cases[] = {{"ConsoleApplication", "new image ", "new image "},
               {"WebApplication", "new image ", "new image "},
               {"Application", "new context ", "new context "},
               {"", "new context image ", "new image "}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.application);
    FakeHost host({.contexts = false, .application = c.application});
    for (const char* calls : {c.first, c.second}) {
      PictureWriter writer;
      host.calls.clear();
      EXPECT_EQ(writer.NewPictureWriter(2, 2), IsConsole);
      EXPECT_EQ(host.calls, calls);
    }
    EXPECT_TRUE(host.IsBalancedWithout({}));
  }
}

}  // namespace
