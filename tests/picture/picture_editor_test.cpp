#include "picture/picture_editor.h"

#include <gd.h>
#include <gtest/gtest.h>

#include "platform/core_graphics.h"
#include "tests/picture/fake_host.h"

namespace {

HostOptions With(HostOptions options, const std::function<void(HostOptions&)>& change) {
  change(options);
  return options;
}

TEST(PictureEditor, StoresEachFormatsBytes) {
  const auto desktop = [](uint32_t alpha_info, size_t padding = 0) {
    return With(DesktopHost(), [=](auto& o) { o.alpha_info = alpha_info, o.padding = padding; });
  };
  const struct {
    HostOptions host;
    uint32_t bytes;  // of red 10, green 20, blue 30
  } cases[] = {
      {desktop(1), 0x0A141EFF},
      {desktop(2), 0xFF0A141E},
      {desktop(3), 0x0A141EFF},
      {desktop(4), 0xFF0A141E},
      {desktop(5), 0x0A141EFF},
      {desktop(6), 0xFF0A141E},
      {desktop(14), 0xFF0A141E},    // 6 with another flag beside
                                    // it
      {desktop(1, 5), 0x0A141EFF},  // rows that are not aligned
      {ConsoleHost(), 0x1E140A00},  // the int 0x000A141E
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.host.application_class + ", alpha info " + std::to_string(c.host.alpha_info));
    FakeHost host(c.host);
    PictureWriter writer;
    ASSERT_TRUE(writer.NewPictureWriter(3, 2));
    for (int row = 0; row < 2; ++row, writer.NextRow()) {
      for (int x = 0; x < 3; ++x) writer.WritePixel(10, 20, 30);
    }
    writer.WritePixel(0, 0, 0);  // past the last row: row 0 again
    host.calls.clear();
    REALpictureStruct* picture = writer.RenderPictureWriter();
    EXPECT_EQ(host.calls, (std::vector<std::string>{"clear cache", "unlock", "clear cache"}));
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
    FakeHost host(DesktopHost());
    PictureWriter writer;
    EXPECT_EQ(writer.NewPictureWriter(c.width, c.height), c.asked) << c.width << " by " << c.height;
    EXPECT_EQ(host.calls.empty(), !c.asked);
    writer.ReleasePicture();
    EXPECT_TRUE(host.IsBalancedWithout({}));
  }
}

CGContext& Context(REALpictureDescription& d) { return *static_cast<CGContextRef>(d.platform_object); }
gdImage& Image(REALpictureDescription& d) { return *static_cast<gdImage*>(d.platform_object); }

TEST(PictureEditor, RefusesPixelsItCannotWrite) {
  const auto desktop = [](const std::function<void(HostOptions&)>& change) { return With(DesktopHost(), change); };
  const auto context = [](const std::function<void(REALpictureDescription&)>& spoil) {
    return With(DesktopHost(), [=](auto& o) { o.spoil = spoil; });
  };
  const auto image = [](const std::function<void(REALpictureDescription&)>& spoil) {
    return With(ConsoleHost(), [=](auto& o) { o.spoil = spoil; });
  };
  static uint8_t* palette_rows[4] = {};
  const struct {
    const char* what;
    HostOptions host;
    bool opens = false;
  } cases[] = {
      {"no alpha", desktop([](auto& o) { o.alpha_info = 0; })},
      {"alpha only", desktop([](auto& o) { o.alpha_info = 7; })},
      {"24 bits", desktop([](auto& o) { o.bits_per_pixel = 24; })},
      {"type 0", desktop([](auto& o) { o.picture_type = 0; })},
      {"type 1", desktop([](auto& o) { o.picture_type = 1; })},
      {"type 3", desktop([](auto& o) { o.picture_type = 3; })},
      {"type 4", desktop([](auto& o) { o.picture_type = 4; }), true},
      {"no type", desktop([](auto& o) { o.missing = "PluginPictureGetType"; }), true},
      {"not told which lock", desktop([](auto& o) { o.missing = "REALLockObject"; })},
      {"no description", desktop([](auto& o) { o.descriptions = 0; })},
      {"desktop with images", desktop([](auto& o) { o.contexts = false, o.images = true; })},
      {"context of another kind", context([](auto& d) { d.kind = 10; })},
      {"no context", context([](auto& d) { d.platform_object = nullptr; })},
      {"no pixels", context([](auto& d) { Context(d).data = nullptr; })},
      {"short rows", context([](auto& d) { Context(d).bytes_per_row = 11; })},
      {"overflowing rows", context([](auto& d) { Context(d).width = SIZE_MAX / 4 + 1; })},
      {"narrower context", context([](auto& d) { Context(d).width = 2; })},
      {"lower context", context([](auto& d) { Context(d).height = 3; })},
      {"image of another kind", image([](auto& d) { d.kind = 8; })},
      {"no image", image([](auto& d) { d.platform_object = nullptr; })},
      {"palette image", image([](auto& d) { Image(d).pixels = palette_rows; })},
      {"not true colour", image([](auto& d) { Image(d).trueColor = 0; })},
      {"no rows", image([](auto& d) { Image(d).tpixels = nullptr; })},
      {"a row missing", image([](auto& d) { Image(d).tpixels[3] = nullptr; })},
      {"image narrower than described", image([](auto& d) { --Image(d).sx; })},
      {"lower description", image([](auto& d) { --d.height; })},
      {"empty description", image([](auto& d) { d.height = 0; })},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    FakeHost host(c.host);
    {
      PictureWriter writer;
      EXPECT_EQ(writer.NewPictureWriter(3, 4), c.opens);
      EXPECT_EQ(host.calls.front(), "newPicture");
    }
    EXPECT_TRUE(host.IsBalancedWithout({}));
  }
}

TEST(PictureEditor, FindsOutTheKindOfHostOnce) {
  const struct {
    const char* application_class;
    bool contexts, images;
    bool desktop, console, opens;
    std::vector<std::string> locks;
  } cases[] = {
      {"Application", true, true, true, false, true, {"lock context"}},
      {"ConsoleApplication", true, true, false, true, true, {"lock image"}},
      {"WebApplication", true, true, false, true, true, {"lock image"}},
      {"", true, true, true, false, true, {"lock context"}},
      {"", false, true, false, true, true, {"lock context", "lock image"}},
      {"", false, false, false, false, false, {"lock context", "lock image"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.application_class);
    FakeHost host({.application_class = c.application_class, .contexts = c.contexts, .images = c.images});
    PictureWriter writer;
    EXPECT_EQ(writer.NewPictureWriter(2, 2), c.opens);
    std::erase_if(host.calls, [](const std::string& call) { return !call.starts_with("lock"); });
    EXPECT_EQ(host.calls, c.locks);
    EXPECT_EQ(IsDesktop, c.desktop);
    EXPECT_EQ(IsConsole, c.console);
    host.options.application_class = c.console ? "Application" : "ConsoleApplication";  // too late, once found
    writer.NewPictureWriter(2, 2);
    EXPECT_EQ(IsDesktop, c.desktop);
    writer.ReleasePicture();
    EXPECT_TRUE(host.IsBalancedWithout({}));
  }
}

}  // namespace
