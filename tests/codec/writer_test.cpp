#include "codec/writer.h"

#include <gtest/gtest.h>

#include <functional>

#include "tests/oracle/slow_encoder.h"
#include "tests/support/failing_allocation.h"
#include "tests/support/making_documents.h"

namespace {

std::string Hex(const Bytes& bytes) {
  std::string text;
  for (const uint8_t byte : bytes) {
    char digits[4];
    std::snprintf(digits, sizeof digits, "%02X ", byte);
    text += digits;
  }
  return text;
}

struct Case {
  const char* what;
  std::function<void(Gif*)> fill;
  std::string bytes;  // in hex, spaces ignored; what stands between the header and the trailer
};

std::string WithoutSpaces(std::string text) {
  std::erase(text, ' ');
  return text;
}

const std::string kBlankScreen = "0000 0000 00 00 00";

TEST(Writer, WritesScreens) {
  const Case cases[] = {
      {"as NewGif makes it", [](Gif*) {}, kBlankScreen},
      {"all fields, low byte first",
       [](Gif* gif) { *gif->screen = {0x1234, 0x5678, 0, 3, 1, 5, 0x9A, 0xBC, gif->screen->cmap}; },
       "3412 7856 2C 9A BC"},
      {"size bits without a table", [](Gif* gif) { gif->screen->cmap_depth = 3; }, "0000 0000 02 00 00"},
      {"as many entries as there are, whatever the depth says",
       [](Gif* gif) {
         gif->screen->has_cmap = 1;
         gif->screen->color_res = gif->screen->cmap_depth = 8;
         SetPalette(gif->screen->cmap, {0x010203, 0xFFFEFD, 0x808182});
       },
       "0000 0000 F7 00 00 010203 FFFEFD 808182"},
      {"a table that is announced but missing",
       [](Gif* gif) {
         gif->screen->has_cmap = 1;
         SetPalette(gif->screen->cmap, {});
         DeletePalette(std::exchange(gif->screen->cmap, nullptr));
       },
       "0000 0000 80 00 00"},
      {"what does not fit is confined to its bits",
       [](Gif* gif) { *gif->screen = {-1, 0x12345, -7, 9, 2, 300, 0x1FF, -2, gif->screen->cmap}; },
       "FFFF 4523 FF FF FE"},
      {"and below its range too", [](Gif* gif) { *gif->screen = {0, 0, 0, -3, 0, -1, 0, 0, gif->screen->cmap}; },
       kBlankScreen},
  };
  for (const Case& c : cases) {
    const Document gif(NewGif());
    c.fill(gif.get());
    EXPECT_EQ(WithoutSpaces(Hex(Written(gif.get()))), "474946383761" + WithoutSpaces(c.bytes) + "3B") << c.what;
  }
}

TEST(Writer, WritesHeadersUpToTheirFirstNul) {
  for (const std::string header : {"GIF89a", "GIF", ""}) {
    const Document gif(NewGif());
    std::fill(std::begin(gif->header), std::end(gif->header), '\0');
    header.copy(gif->header, 6);
    const Bytes bytes = Written(gif.get());
    EXPECT_EQ(std::string(bytes.begin(), bytes.end() - 8), header);
  }
}

TEST(Writer, WritesBlocks) {
  const Case cases[] = {
      {"an image in the screen's depth",
       [](Gif* gif) {
         gif->screen->cmap_depth = 3;
         GifPicture* picture = AddPicture(gif, 1, 1, false, {5});
         picture->left = 0x0102;
         picture->top = 0x0304;
         picture->cmap_depth = 7;  // not that of a table it has
       },
       "2C 0201 0403 0100 0100 00  03 02 58 09 00"},
      {"an image with its own table, all flags",
       [](Gif* gif) {
         GifPicture* picture = AddPicture(gif, 2, 2, true, {0, 0, 0, 0});
         picture->has_cmap = picture->sorted = 1;
         picture->reserved = 7;
         picture->cmap_depth = 1;
         picture->cmap = MakePalette({0x111213, 0x212223});
       },
       "2C 0000 0000 0200 0200 F8 111213 212223  02 02 84 51 00"},
      {"an image without rows", [](Gif* gif) { AddPicture(gif, 3, 0, false, {}); },
       "2C 0000 0000 0300 0000 00  02 01 2C 00"},
      {"a negative size gives no rows", [](Gif* gif) { AddPicture(gif, -2, 3, true, {}); },
       "2C 0000 0000 FEFF 0300 40  02 01 2C 00"},
      {"rows that could not be made",
       [](Gif* gif) {
         gif->screen->cmap_depth = 3;
         AddPicture(gif, 3, 0, false, {})->height = 3;
       },
       "2C 0000 0000 0300 0300 00  03 01 98 00"},
      {"a depth that no code can have",
       [](Gif* gif) {
         gif->screen->cmap_depth = 12;
         AddPicture(gif, 0, 0, false, {});
       },
       "2C 0000 0000 0000 0000 00  08 03 00 03 02 00"},
      {"an extension",
       [](Gif* gif) {
         AddExtension(gif, 0x1FE, {"abc", "d"});
       },
       "21 FE 03 616263 01 64 00"},
      {"an extension without data", [](Gif* gif) { AddExtension(gif, 0xF9, {}); }, "21 F9 00"},
      {"only an introducer", [](Gif* gif) { AddBlock(gif, 0x141); }, "41"},
      {"image first, then extension",
       [](Gif* gif) {
         AddExtension(gif, 1, {"x"});
         AddPicture(gif, 0, 0, false, {});
         std::swap(gif->blocks[0]->picture, gif->blocks[1]->picture);
       },
       "21 0000 0000 0000 0000 00 02 01 2C 00 01 01 78 00 2C"},
  };
  for (const Case& c : cases) {
    const Document gif(NewGif());
    c.fill(gif.get());
    const std::string written = WithoutSpaces(Hex(Written(gif.get())));
    EXPECT_EQ(written.substr(26), WithoutSpaces(c.bytes) + "3B") << c.what;
  }
}

TEST(Writer, SplitsLongSubBlocks) {
  for (const size_t length : {255, 256, 510, 1000}) {
    const Document gif(NewGif());
    const std::string data(length, 'x');
    AddExtension(gif.get(), 0xFE, {data});
    Bytes expected = {'!', 0xFE};
    for (size_t start = 0; start < length; start += 255) {
      const std::string part = data.substr(start, 255);
      expected.push_back(static_cast<uint8_t>(part.size()));
      expected.insert(expected.end(), part.begin(), part.end());
    }
    expected.insert(expected.end(), {0, ';'});
    const Bytes written = Written(gif.get());
    EXPECT_EQ(Bytes(written.begin() + 13, written.end()), expected) << length;
  }
}

// What follows stays readable: the image has its code size and no data.
TEST(Writer, LeavesOutPixelsWithoutMemory) {
  const Document gif(NewGif());
  AddPicture(gif.get(), 1, 1, false, {0});
  AddExtension(gif.get(), 0xFE, {"x"});
  char bytes[100];
  MyFILE stream = {nullptr, 0, 0, fmemopen(bytes, sizeof bytes, "wb")};
  std::setvbuf(stream.file, nullptr, _IONBF, 0);
  FailAllocation(1, Failing::kFromThenOn);
  WriteGif(&stream, gif.get());
  FailAllocation(0);
  const auto size = static_cast<size_t>(std::ftell(stream.file));
  std::fclose(stream.file);
  EXPECT_EQ(WithoutSpaces(Hex(Bytes(bytes + 13, bytes + size))),
            "2C"
            "0000000001000100"
            "00"
            "0200"
            "21FE017800"
            "3B");
}

// Rows go out in the order of the four passes, whatever the height.
TEST(Writer, WritesRowsInFileOrder) {
  for (int height = 1; height < 40; ++height) {
    std::vector<int> order;
    for (int y = 0; y < height; y += 8) order.push_back(y);
    for (int y = 4; y < height; y += 8) order.push_back(y);
    for (int y = 2; y < height; y += 4) order.push_back(y);
    for (int y = 1; y < height; y += 2) order.push_back(y);
    for (const bool interlace : {false, true}) {
      const Document gif(NewGif());
      gif->screen->cmap_depth = 8;
      Bytes pixels;
      std::vector<Bytes> rows(height);
      for (int y = 0; y < height; ++y) {
        for (int x = 0; x < 3; ++x) pixels.push_back(static_cast<uint8_t>(y * 3 + x));
      }
      for (int y = 0; y < height; ++y) {
        const int from = interlace ? order[y] : y;
        rows[y] = Bytes(pixels.begin() + from * 3, pixels.begin() + from * 3 + 3);
      }
      AddPicture(gif.get(), 3, height, interlace, pixels);
      const Bytes written = Written(gif.get());
      EXPECT_EQ(Bytes(written.begin() + 23, written.end() - 1), SlowImageData(8, rows)) << height << interlace;
    }
  }
}

}  // namespace
