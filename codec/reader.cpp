#include "codec/reader.h"

#include <cstdlib>
#include <cstring>

#include "codec/building.h"
#include "codec/image_decoder.h"
#include "codec/lzw_decoder.h"
#include "codec/row_budget.h"

static int32_t ReadWord(MyFILE* stream) {
  const int32_t low = MyGetc(stream);
  return low | MyGetc(stream) << 8;
}

bool ReadGifPalette(MyFILE* stream, GifPalette* palette) {
  palette->colours = nullptr;
  if (palette->count < 1) return true;
  palette->colours = NewRecord<Colour>(static_cast<size_t>(palette->count));
  const bool made = palette->colours != nullptr;
  for (int32_t i = 0; i < palette->count; ++i) {
    uint8_t rgb[3];
    ReadBytes(stream, rgb, sizeof rgb);
    if (made) palette->colours[i] = {.zero = 0, .red = rgb[0], .green = rgb[1], .blue = rgb[2]};
  }
  if (!made) palette->count = 0;
  return made;
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

// Drops sub-blocks up to and with the empty one.
static void SkipSubBlocks(MyFILE* stream) {
  uint8_t dropped[kMaxSubBlock];
  while (const int length = MyGetc(stream)) ReadBytes(stream, dropped, length);
}

GifData* ReadGifData(MyFILE* stream) {
  const int length = MyGetc(stream);
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

// The image's data from its minimum code size on, into the picture's rows. Without a picture it is passed
// over.
static void ReadImageData(MyFILE* stream, const GifPicture* picture) {
  const int32_t code_size = MyGetc(stream);
  const bool decodes = picture && picture->pixels && code_size <= kMaxMinimumCodeSize;
  if (decodes && DecodeImage(stream, code_size, picture->pixels, picture->width, picture->height)) return;
  SkipSubBlocks(stream);
}

// An image must be read to its end with or without memory for it, so that the next block is found.
static void ReadImage(MyFILE* stream, GifBlock* block, RowBudget* budget) {
  GifPalette no_palette{};
  GifPicture no_picture{};
  no_picture.cmap = &no_palette;

  block->picture = NewPicture();
  bool made = block->picture != nullptr;
  made = ReadImageDescriptor(stream, made ? block->picture : &no_picture) && made;
  made = made && budget->Spend(block->picture->width, block->picture->height) && MakeRows(block->picture);
  if (!made) {
    DeletePicture(block->picture);
    block->picture = nullptr;
    std::free(no_palette.colours);
  }
  ReadImageData(stream, block->picture);
}

// The next block; null after the last one, or without memory.
static GifBlock* ReadBlock(MyFILE* stream, RowBudget* budget) {
  GifBlock* block = NewRecord<GifBlock>();
  if (!block) return nullptr;
  block->intro = MyGetc(stream);
  switch (block->intro) {
    case kExtensionIntroducer:
      ReadExtension(stream, block);
      return block;
    case kImageIntroducer:
      ReadImage(stream, block, budget);
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
  RowBudget budget(stream);
  while (GifBlock* block = ReadBlock(stream, &budget)) AppendBlock(gif, block);
}
