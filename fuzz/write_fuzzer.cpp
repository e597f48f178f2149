// Builds a document from the input, writes it and reads the file again. What a reader can have made must come back
// the same; of any other tree the file must be one that the reader and the slow decoder take for the same.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "codec/format.h"
#include "codec/memory.h"
#include "codec/writer.h"
#include "fuzz/flat_document.h"
#include "fuzz/input.h"

namespace {

class TreeMaker {
 public:
  explicit TreeMaker(Input input) : input_(input), sound_(input_.Coin()) {}

  bool sound() const { return sound_; }  // the tree is one that a reader can have made

  Gif* Make() {
    Gif* gif = NewGif();
    if (!sound_) {
      for (int i = 0; i < 6; ++i) gif->header[i] = static_cast<char>(input_.Byte());
    }
    MakeScreen(gif->screen);
    depth_ = gif->screen->cmap_depth;
    for (int blocks = input_.Below(12); blocks > 0; --blocks) {
      if (GrowList(gif->blocks, gif->count)) gif->blocks[gif->count++] = MakeBlock();
    }
    return gif;
  }

 private:
  // A value of the field's range in a file; of an unsound tree any at all.
  int32_t Field(int32_t least, int32_t most) {
    const int32_t value = input_.Word();
    if (sound_) return least + value % (most - least + 1);
    return input_.Coin() ? value : -value;
  }
  bool Unsound() { return !sound_ && input_.Coin(); }

  void FillPalette(GifPalette*& palette, int32_t entries) {
    if (Unsound()) {
      if (input_.Coin()) {
        palette = nullptr;
        return;
      }
      entries = input_.Byte();
    }
    MakeColours(palette, entries);
    for (int32_t i = 0; i < palette->count; ++i) {
      palette->colours[i] = {0, input_.Byte(), static_cast<uint8_t>(i), input_.Byte()};
    }
  }

  void MakeScreen(GifScreen* screen) {
    screen->width = Field(0, 65535);
    screen->height = Field(0, 65535);
    screen->has_cmap = Field(0, 1);
    screen->color_res = Field(1, 8);
    screen->sorted = Field(0, 1);
    screen->cmap_depth = Field(1, 8);
    screen->bgcolour = Field(0, 255);
    screen->aspect = Field(0, 255);
    FillPalette(screen->cmap, screen->has_cmap && sound_ ? 1 << screen->cmap_depth : 0);
  }

  GifBlock* MakeBlock() {
    const bool image = input_.Coin();
    const int32_t intro = Unsound() ? input_.Byte() : image ? kImageIntroducer : kExtensionIntroducer;
    GifBlock* block = NewGifBlock(image || Unsound(), !image || Unsound());
    block->intro = intro;
    if (block->picture) FillPicture(block->picture);
    if (block->extension) FillExtension(block->extension);
    return block;
  }

  void FillPicture(GifPicture* picture) {
    picture->left = Field(0, 65535);
    picture->top = Field(0, 65535);
    // Now and then large enough to use up all codes.
    const int32_t scale = input_.Below(16) < 15 ? 1 : LargeImages() ? 24 : SmallImages() ? 3 : 6;
    picture->width = input_.Below(40) * scale - (Unsound() ? 2 : 0);
    picture->height = input_.Below(40) * scale - (Unsound() ? 2 : 0);
    picture->has_cmap = Field(0, 1);
    picture->interlace = Field(0, 1);
    picture->sorted = Field(0, 1);
    picture->reserved = Field(0, 3);
    if (picture->has_cmap) picture->cmap_depth = Field(1, 8);
    FillPalette(picture->cmap, picture->has_cmap && sound_ ? 1 << picture->cmap_depth : 0);
    if (Unsound()) return;  // without pixels
    const int32_t bits = std::max(picture->has_cmap ? picture->cmap_depth : depth_, 2);
    FillPixels(picture, static_cast<uint8_t>(sound_ ? (1 << bits) - 1 : 255));
  }

  // From the input; where `noise` says so, and behind its end, by a generator.
  void FillPixels(GifPicture* picture, uint8_t mask) {
    picture->pixel_count = int64_t{std::max(picture->width, 0)} * std::max(picture->height, 0);
    auto* pixels = NewRecord<uint8_t>(static_cast<size_t>(picture->pixel_count) + 1);
    picture->pixels = pixels;
    picture->memory = pixels;
    uint32_t state = input_.Byte();
    const uint8_t noise = input_.Byte();
    for (int64_t i = 0; i < picture->pixel_count; ++i) {
      state = state * 1664525 + 1013904223;
      const bool made = input_.empty() || (i & noise) != 0;
      pixels[i] = (made ? static_cast<uint8_t>((state >> 24) & noise) : input_.Byte()) & mask;
    }
  }

  void FillExtension(GifExtension* extension) {
    extension->marker = Field(0, 255);
    for (int items = input_.Below(6); items > 0; --items) {
      const int32_t length = 1 + input_.Byte() % 255 + (Unsound() ? 300 : 0);
      GifData* data = NewGifData(length);
      for (int32_t i = 0; i < length; ++i) data->bytes[i] = input_.Byte();
      if (GrowList(extension->data, extension->count)) extension->data[extension->count++] = data;
    }
  }

  Input input_;
  bool sound_;
  int32_t depth_ = 0;
};

Bytes Write(const Gif* gif) {
  char* bytes = nullptr;
  size_t size = 0;
  FILE* file = open_memstream(&bytes, &size);
  MyFILE stream = {nullptr, 0, 0, file};
  WriteGif(&stream, gif);
  std::fclose(file);
  Bytes written(bytes, bytes + size);
  std::free(bytes);
  return written;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  TreeMaker maker{Input(data, size)};
  Gif* gif = maker.Make();
  const Bytes file = Write(gif);
  Bytes flat = maker.sound() ? Flatten(gif) : Bytes();
  DeleteGif(gif);

  const Bytes expected = FlattenByOracle(file);
  const Bytes read = FlattenByReader(file);
  ExpectEqual("file written", read, expected);
  if (!maker.sound()) return 0;
  const auto size_of_file = static_cast<int64_t>(file.size());
  const auto* end = reinterpret_cast<const uint8_t*>(&size_of_file);
  flat.insert(flat.end(), end, end + sizeof size_of_file);  // the reader reads the file to its end
  ExpectEqual("document read again", read, flat);
  return 0;
}
