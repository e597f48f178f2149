// Records and arguments that are not there, as far as no file and no script can leave them out.

#include <gtest/gtest.h>

#include <string>

#include "codec/lzw_decoder.h"
#include "codec/reader.h"
#include "codec/writer.h"

namespace {

std::string Written(const Gif& gif) {
  char* bytes = nullptr;
  size_t size = 0;
  MyFILE stream = {nullptr, 0, 0, open_memstream(&bytes, &size)};
  WriteGif(&stream, &gif);
  std::fclose(stream.file);
  std::string written(bytes, size);
  std::free(bytes);
  return written;
}

TEST(Records, StreamsWithoutBytesGiveZeros) {
  for (const int64_t claimed : {0, 5}) {
    MyFILE stream = {nullptr, claimed, 0, nullptr};
    for (int i = 0; i < 3; ++i) EXPECT_EQ(MyGetc(&stream), 0);
    uint8_t bytes[2] = {1, 2};
    ReadBytes(&stream, bytes, 2);
    EXPECT_EQ(bytes[0] + bytes[1], 0);
  }
}

TEST(Records, AreSkippedWhereTheyAreMissing) {
  const std::string image("\x02\0\0\0\0\x02", 6);  // what follows the place: size, no table, minimum code size
  uint8_t bytes[] = {1};
  GifPicture picture = {};
  picture.width = 2;
  GifData data = {1, bytes};
  GifData* items[] = {nullptr, &data};
  GifExtension extension = {5, 2, nullptr};
  GifBlock block = {',', &picture, nullptr}, extended = {'!', nullptr, &extension};
  GifBlock* blocks[] = {nullptr, &block, &extended};
  GifScreen screen = {};
  Gif gif = {"GIF", &screen, 3, nullptr};
  const std::string start("GIF\0\0\0\0\0\0\0", 10), place(4, '\0');
  EXPECT_EQ(Written(gif), start + ";");
  gif.blocks = blocks;
  const auto whole = [&](const std::string& item) {
    return start + "," + place + image + "\1\x2C" + std::string("\0!\5", 3) + item + std::string("\0;", 2);
  };
  EXPECT_EQ(Written(gif), whole(""));
  extension.data = items;
  EXPECT_EQ(Written(gif), whole("\1\1"));

  DeleteGif(nullptr);
  DeleteGifBlock(nullptr);
}

TEST(Records, AreReadOnlyWhereThereIsRoom) {
  const uint8_t bytes[] = {2, 0x8C, 0x0B, 0};
  MyFILE stream = {bytes, sizeof bytes, 0, nullptr};
  Gif gif = {};
  ReadGif(&stream, nullptr);
  ReadGif(nullptr, &gif);
  GifDecoder decoder;
  SetUpGifDecoder(&decoder, 2);
  ReadGifLine(&stream, &decoder, nullptr, 2);
  GifPalette palette = {};
  EXPECT_TRUE(ReadGifPalette(&stream, &palette));
  EXPECT_EQ(palette.colours, nullptr);
  EXPECT_EQ(stream.position, 0);
}

}  // namespace
