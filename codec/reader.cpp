#include "codec/reader.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "codec/code_input.h"
#include "codec/format.h"
#include "codec/image_decoder.h"
#include "codec/memory.h"
#include "codec/sub_blocks.h"

static int32_t ReadWord(MyFILE* stream) {
  const int32_t low = MyGetc(stream);
  return low | MyGetc(stream) << 8;
}

bool ReadGifPalette(MyFILE* stream, GifPalette* palette) {
  const int32_t count = palette->count;
  palette->colours = nullptr;
  if (count < 1) return true;
  palette->colours = NewRecord<Colour>(static_cast<size_t>(count));
  if (!palette->colours) palette->count = 0;
  uint8_t rgb[256][3];
  for (int32_t first = 0; first < count; first += 256) {
    const int32_t entries = std::min(count - first, 256);
    ReadBytes(stream, rgb[0], int64_t{entries} * 3);
    for (int32_t i = 0; palette->colours && i < entries; ++i) {
      palette->colours[first + i] = {.zero = 0, .red = rgb[i][0], .green = rgb[i][1], .blue = rgb[i][2]};
    }
  }
  return palette->colours != nullptr;
}

static void ReadScreen(MyFILE* stream, GifScreen* screen) {
  screen->width = ReadWord(stream);
  screen->height = ReadWord(stream);
  const int packed = MyGetc(stream);
  screen->has_cmap = packed >> 7 & 1;
  screen->color_res = (packed >> 4 & 7) + 1;
  screen->sorted = packed >> 3 & 1;
  screen->cmap_depth = (packed & 7) + 1;
  screen->bgcolour = MyGetc(stream);
  screen->aspect = MyGetc(stream);
  if (!screen->has_cmap) return;
  screen->cmap->count = 1 << screen->cmap_depth;
  ReadGifPalette(stream, screen->cmap);
}

GifData* ReadGifData(MyFILE* stream) {
  const int32_t length = BeginSubBlock(stream);
  GifData* data = length > 0 ? NewGifData(length) : nullptr;
  if (data) ReadBytes(stream, data->bytes, length);
  return data;
}

static void ReadExtension(MyFILE* stream, GifExtension* extension) {
  extension->marker = MyGetc(stream);
  while (GifData* data = ReadGifData(stream)) {
    if (!GrowList(extension->data, extension->count)) {
      DeleteGifData(data);
      DeleteSubBlocks(extension);
      return SkipSubBlocks(stream);
    }
    extension->data[extension->count++] = data;
  }
}

// The descriptor and the local colour table, read in full also when it returns false for want of memory.
static bool ReadImageDescriptor(MyFILE* stream, GifPicture* picture) {
  picture->left = ReadWord(stream);
  picture->top = ReadWord(stream);
  picture->width = ReadWord(stream);
  picture->height = ReadWord(stream);
  const int packed = MyGetc(stream);
  picture->has_cmap = packed >> 7 & 1;
  picture->interlace = packed >> 6 & 1;
  picture->sorted = packed >> 5 & 1;
  picture->reserved = packed >> 3 & 3;
  if (!picture->has_cmap) return true;
  picture->cmap_depth = (packed & 7) + 1;
  picture->cmap->count = 1 << picture->cmap_depth;
  return ReadGifPalette(stream, picture->cmap);
}

// The image's data from its minimum code size on. When the pixels are not wanted they are passed over. False when
// there is no memory for them.
static bool ReadImageData(MyFILE* stream, GifPicture* picture, bool wanted) {
  CodeInput input;
  input.Start();
  const int32_t code_size = MyGetc(stream);
  const bool decodes = wanted && picture->width > 0 && picture->height > 0 && code_size <= kMaxMinimumCodeSize;
  const bool made = !decodes || DecodeImage(stream, &input, code_size, picture);
  if (!input.data_ended) SkipSubBlocks(stream);
  return made;
}

// An image is read to its end with or without memory for it, so that the next block is found.
static void ReadImage(MyFILE* stream, GifBlock* block) {
  const bool described = ReadImageDescriptor(stream, block->picture);
  const bool made = ReadImageData(stream, block->picture, described);
  if (!described || !made) DropPicture(block);
}

// The next block; null after the last one, or without memory.
static GifBlock* ReadBlock(MyFILE* stream) {
  const int32_t intro = MyGetc(stream);
  const bool image = intro == kImageIntroducer;
  if (!image && intro != kExtensionIntroducer) return nullptr;
  GifBlock* block = NewGifBlock(image, !image);
  if (!block) return nullptr;
  block->intro = intro;
  if (image) {
    ReadImage(stream, block);
  } else {
    ReadExtension(stream, block->extension);
  }
  return block;
}

// Takes the block over. When the list cannot grow, it is emptied and the block dropped.
static void AppendBlock(Gif* gif, GifBlock* block) {
  if (GrowList(gif->blocks, gif->count)) {
    gif->blocks[gif->count++] = block;
  } else {
    DeleteGifBlock(block);
    DeleteBlocks(gif);
  }
}

void ReadGif(MyFILE* stream, Gif* gif) {
  if (!stream || !gif) return;
  ReadBytes(stream, reinterpret_cast<uint8_t*>(gif->header), 6);
  if (std::memcmp(gif->header, "GIF87a", 6) != 0 && std::memcmp(gif->header, "GIF89a", 6) != 0) return;
  ReadScreen(stream, gif->screen);
  while (GifBlock* block = ReadBlock(stream)) AppendBlock(gif, block);
}
