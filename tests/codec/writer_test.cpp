#include "codec/writer.h"

#include <gtest/gtest.h>

#include "tests/support/failing_allocation.h"
#include "tests/support/making_documents.h"

// What documents hold that scripts cannot make; the rest is tested by saving from scripts.

namespace {

std::string Hex(const std::vector<uint8_t>& bytes) {
  std::string text;
  for (const uint8_t byte : bytes) {
    char digits[3];
    std::snprintf(digits, sizeof digits, "%02X", byte);
    text += digits;
  }
  return text;
}

TEST(Writer, WritesWhatTheRecordsHold) {
  const struct {
    const char* what;
    void (*fill)(Gif*);
    const char* bytes;  // in hex
  } cases[] = {
      {"as NewGif makes it", [](Gif*) {}, "474946383761000000000000003B"},
      {"a header that ends early", [](Gif* gif) { gif->header[3] = '\0'; }, "474946000000000000003B"},
      {"reserved bits, as many as there are", [](Gif* gif) { AddPicture(gif, 1, 1, true, {0})->reserved = 6; },
       "474946383761000000000000002C00000000010001005002024401003B"},
      {"rows that could not be made", [](Gif* gif) { AddPicture(gif, 3, 0, false, {})->height = 3; },
       "474946383761000000000000002C00000000030003000002012C003B"},
      {"entries that are missing",
       [](Gif* gif) {
         GifExtension* extension = AddExtension(gif, 0xFE, {"a", "b"});
         DeleteGifData(std::exchange(extension->data[0], nullptr));
         AddBlock(gif, ',');
         DeleteGifBlock(std::exchange(gif->blocks[1], nullptr));
       },
       "4749463837610000000000000021FE0162003B"},
  };
  for (const auto& c : cases) {
    const Document gif(NewGif());
    c.fill(gif.get());
    EXPECT_EQ(Hex(Written(gif.get())), c.bytes) << c.what;
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
  EXPECT_EQ(Hex({bytes + 13, bytes + size}), "2C000000000100010000020021FE0178003B");
}

}  // namespace
