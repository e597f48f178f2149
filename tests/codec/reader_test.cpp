#include "codec/reader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/support/failing_allocation.h"

namespace {

using Bytes = std::vector<uint8_t>;

Bytes Join(std::initializer_list<Bytes> parts) {
  Bytes whole;
  for (const Bytes& part : parts) whole.insert(whole.end(), part.begin(), part.end());
  return whole;
}

const Bytes k87a = {'G', 'I', 'F', '8', '7', 'a'};
const Bytes k89a = {'G', 'I', 'F', '8', '9', 'a'};
const Bytes kScreen = {3, 0, 2, 1, 0, 7, 49};  // 3 x 258, no table, background 7, aspect 49
const Bytes kTrailer = {0x3B};
// Minimum code size 2. Codes 1, 0, 1 of 3 bits, then 0, 3 and 5 (the end) of 4, in two sub-blocks.
const Bytes kFivePixels = {2, 2, 0b01'000'001, 0b011'0000'0, 1, 0b000'0101'0, 0};

Bytes Image(uint8_t width, uint8_t height, uint8_t packed) {
  return {0x2C, 4, 1, 5, 0, width, 0, height, 0, packed};  // at 260, 5
}

// A document in words: " number" for each field, "; " before each block.
class Description {
 public:
  explicit Description(const Gif* gif) {
    text_ += gif->header;
    text_ += ";";
    const GifScreen* s = gif->screen;
    Add({s->width, s->height, s->color_res, s->sorted, s->cmap_depth, s->bgcolour, s->aspect});
    Add(s->cmap);
    for (int32_t i = 0; i < gif->count; ++i) {
      text_ += "; ";
      text_ += static_cast<char>(gif->blocks[i]->intro);
      if (gif->blocks[i]->extension) Add(*gif->blocks[i]->extension);
      if (gif->blocks[i]->picture) Add(*gif->blocks[i]->picture);
    }
  }
  const std::string& text() const { return text_; }

 private:
  void Add(std::initializer_list<int32_t> fields, const char* before = " ") {
    for (const int32_t field : fields) text_.append(before).append(std::to_string(field));
  }
  void Add(const GifPalette* palette) {
    if (palette->count == 0) return;
    text_ += " table of";
    Add({palette->count});
    for (const Colour c : {palette->colours[0], palette->colours[palette->count - 1]}) {
      Add({c.zero, c.red, c.green, c.blue});
    }
  }
  void Add(const GifExtension& extension) {
    Add({extension.marker});
    text_ += ":";
    for (int32_t i = 0; i < extension.count; ++i) {
      const GifData* data = extension.data[i];
      Add({data->length});
      Add({data->bytes[data->length - 1]}, "x");
    }
  }
  void Add(const GifPicture& p) {
    Add({p.left, p.top, p.width, p.height, p.interlace, p.sorted, p.reserved, p.cmap_depth});
    Add(p.cmap);
    for (int32_t y = 0; p.data && y < p.height; ++y) {
      text_ += " /";
      for (int32_t x = 0; p.data[y] && x < p.width; ++x) Add({p.data[y][x]}, "");
    }
  }
  std::string text_;
};

std::string Read(const Bytes& file, int64_t* position = nullptr) {
  MyFILE stream{file.data(), static_cast<int64_t>(file.size()), 0, nullptr};
  Gif* gif = NewGif();
  ReadGif(&stream, gif);
  std::string text = Description(gif).text();
  DeleteGif(gif);
  if (position) *position = stream.position;
  return text;
}

TEST(Reader, BuildsWhatTheBytesDescribe) {
  const std::string screen = "; 3 258 1 0 1 7 49";
  const Bytes comment = {0x21, 0xFE, 1, 'c', 0};
  std::string zero_rows;
  for (int i = 1; i < 3000; ++i) zero_rows += " /000";
  const std::string no_screen = "; 0 0 0 0 0 0 0";
  struct Case {
    const char* name;
    Bytes file;
    std::string text;
    int64_t unread;  // bytes at the end
  };
  const Case cases[] = {
      {"an empty stream", {}, no_screen, 0},
      {"another version", Join({{'G', 'I', 'F', '9', '0', 'a'}, kScreen}), "GIF90a" + no_screen, 7},
      {"bytes after the trailer", Join({k89a, kScreen, kTrailer, comment}), "GIF89a" + screen, 5},
      {"a global table, all bits of the packed byte",
       Join({k89a, {1, 0, 1, 0, 0xFF, 0, 0}, {9, 8, 7}, Bytes(762, 0), {6, 5, 4}, comment}),
       "GIF89a; 1 1 8 1 8 0 0 table of 256 0 9 8 7 0 6 5 4; ! 254: 1x99", 0},
      {"a local table, all bits of the packed byte",
       Join({k87a, kScreen, Image(5, 1, 0xF8), {1, 2, 3, 4, 5, 6}, kFivePixels, comment}),
       "GIF87a" + screen + "; , 260 5 5 1 1 1 3 1 table of 2 0 1 2 3 0 4 5 6 /10103; ! 254: 1x99", 0},
      {"no rows", Join({k87a, kScreen, Image(3, 0, 0), kFivePixels, comment}),
       "GIF87a" + screen + "; , 260 5 3 0 0 0 0 0; ! 254: 1x99", 0},
      {"a code size too large", Join({k87a, kScreen, Image(2, 2, 0), {12, 2, 0xFF, 0xFF, 0}, comment}),
       "GIF87a" + screen + "; , 260 5 2 2 0 0 0 0 /00 /00; ! 254: 1x99", 0},
      {"a large image in a few bytes",
       Join({k87a, kScreen, {0x2C, 0, 0, 0, 0, 3, 0, 0xB8, 0x0B, 0}, {2, 1, 0b01'000'001}}),
       "GIF87a" + screen + "; , 0 0 3 3000 0 0 0 0 /101" + zero_rows, 0},
      {"an unknown introducer", Join({k87a, kScreen, comment, {0}, comment}), "GIF87a" + screen + "; ! 254: 1x99", 5},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    int64_t position = 0;
    EXPECT_EQ(Read(c.file, &position), c.text);
    EXPECT_EQ(position, static_cast<int64_t>(c.file.size()) - c.unread);
    for (size_t size = 0; size < c.file.size(); ++size) {  // cut anywhere: whatever it gives, no fault
      Read(Bytes(c.file.begin(), c.file.begin() + static_cast<std::ptrdiff_t>(size)));
    }
  }
  ReadGif(nullptr, nullptr);
}

// Each allocation of a read fails once, in order. What is left must be a document, and everything is
// released.
TEST(Reader, GoesOnWithoutMemory) {
  const Bytes file = Join({k89a,
                           {1, 0, 1, 0, 0x80, 0, 0},
                           Bytes(6, 9),
                           {0x21, 1, 1, 0x3B, 1, 0x3B, 0},  // sub-blocks that, left unread, read as the trailer
                           Image(5, 1, 0x80),
                           {1, 2, 3, 4, 5, 6},
                           kFivePixels,
                           {0x21, 2, 0},
                           kTrailer});
  const std::string start = "GIF89a; 1 1 1 0 1 0 0", table = start + " table of 2 0 9 9 9 0 9 9 9";
  const std::string first = "; ! 1: 1x59 1x59", last = "; ! 2:", all = table + first;
  const std::string image = "; , 260 5 5 1 0 0 0 1 table of 2 0 1 2 3 0 4 5 6 /10103", no_image = "; ,";
  struct Case {
    const char* failing;
    std::string text;
  };
  const Case cases[] = {
      {"global colours", start + first + image + last},
      {"block", table},
      {"extension", table + "; !" + image + last},
      {"sub-block", table + "; ! 1:"},
      {"its bytes", table + "; ! 1:"},
      {"list of sub-blocks", table + "; ! 1:" + image + last},
      {"second sub-block", table + "; ! 1: 1x59"},
      {"its bytes", table + "; ! 1: 1x59"},
      {"list of sub-blocks", table + "; ! 1:" + image + last},
      {"list of blocks", table + image + last},
      {"block", all},
      {"picture", all + no_image + last},
      {"its palette", all + no_image + last},
      {"local colours", all + no_image + last},
      {"rows", all + no_image + last},
      {"pixels", all + no_image + last},
      {"list of blocks", table + last},
      {"block", all + image},
      {"extension", all + image + "; !"},
      {"list of blocks", table},
      {"block of the trailer", all + image + last},
      {"none", all + image + last},
  };
  int64_t n = 0;
  for (const Case& c : cases) {
    SCOPED_TRACE(c.failing);
    MyFILE stream{file.data(), static_cast<int64_t>(file.size()), 0, nullptr};
    Gif* gif = NewGif();
    FailAllocation(++n);
    ReadGif(&stream, gif);
    EXPECT_EQ(AllocationFailed(), &c != std::end(cases) - 1);
    FailAllocation(n, Failing::kFromThenOn);  // and from there on: no more than no fault
    Gif* starved = NewGif();
    stream.position = 0;
    ReadGif(&stream, starved);
    FailAllocation(0);
    EXPECT_EQ(Description(gif).text(), c.text);
    DeleteGif(gif);
    DeleteGif(starved);
  }
}

// Allocations and time grow with the size of the file; the list of blocks is not copied for each.
TEST(Reader, ListsGrowByDoubling) {
  constexpr int32_t kBlocks = 100000;
  Bytes file = Join({k89a, kScreen});
  for (int32_t i = 0; i < kBlocks; ++i) file.insert(file.end(), {0x21, 0xFE, 0});
  file.insert(file.end(), {0x21, 0xFF});
  for (int32_t i = 0; i < kBlocks; ++i) file.insert(file.end(), {1, 7});
  MyFILE stream{file.data(), static_cast<int64_t>(file.size()), 0, nullptr};
  Gif* gif = NewGif();
  FailAllocation(0);
  ReadGif(&stream, gif);
  EXPECT_EQ(gif->count, kBlocks + 1);
  EXPECT_EQ(gif->blocks[kBlocks]->extension->count, kBlocks);
  EXPECT_LT(AllocationCount(), 4 * kBlocks + 100);
  DeleteGif(gif);
}

}  // namespace
