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
  if (length == 0) return nullptr;
  GifData* data = NewRecord<GifData>();
  if (!data) return nullptr;
  data->length = length;
  data->bytes = NewRecord<uint8_t>(static_cast<size_t>(length));
  if (!data->bytes) {
    DeleteGifData(data);
    return nullptr;
  }
  ReadBytes(stream, data->bytes, length);
  return data;
}

static void ReadExtension(MyFILE* stream, GifBlock* block) {
  const int marker = MyGetc(stream);
  GifExtension* extension = NewRecord<GifExtension>();
  block->extension = extension;
  if (!extension) return SkipSubBlocks(stream);
  extension->marker = marker;
  while (GifData* data = ReadGifData(stream)) {
    if (!GrowList(extension->data, extension->count)) {
      DeleteGifData(data);
      DeleteSubBlocks(extension);
      return SkipSubBlocks(stream);
    }
    extension->data[extension->count++] = data;
  }
}

// The descriptor and the local colour table, into a picture whose palette the caller provides. Read in full
// also when it returns false for want of memory.
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

// The image's data from its minimum code size on. Without a picture it is passed over. False when there is no memory
// for the pixels.
static bool ReadImageData(MyFILE* stream, GifPicture* picture) {
  CodeInput input;
  input.Start();
  const int32_t code_size = MyGetc(stream);
  const bool decodes = picture && picture->width > 0 && picture->height > 0 && code_size <= kMaxMinimumCodeSize;
  const bool made = !decodes || DecodeImage(stream, &input, code_size, picture);
  if (!input.data_ended) SkipSubBlocks(stream);
  return picture && made;
}

// An image is read to its end with or without memory for it, so that the next block is found.
static void ReadImage(MyFILE* stream, GifBlock* block) {
  GifPalette no_palette{};
  GifPicture no_picture{};
  no_picture.cmap = &no_palette;

  GifPicture* picture = NewPicture();
  const bool described = ReadImageDescriptor(stream, picture ? picture : &no_picture);
  if (ReadImageData(stream, described ? picture : nullptr)) {
    block->picture = picture;
  } else {
    DeletePicture(picture);
  }
  std::free(no_palette.colours);
}

// The next block; null after the last one, or without memory.
static GifBlock* ReadBlock(MyFILE* stream) {
  GifBlock* block = NewRecord<GifBlock>();
  if (!block) return nullptr;
  block->intro = MyGetc(stream);
  switch (block->intro) {
    case kExtensionIntroducer:
      ReadExtension(stream, block);
      return block;
    case kImageIntroducer:
      ReadImage(stream, block);
      return block;
    default:
      DeleteGifBlock(block);
      return nullptr;
  }
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
