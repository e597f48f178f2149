#include "codec/document.h"

#include <cstdlib>
#include <cstring>

#include "codec/memory.h"

GifPalette* NewPalette(int32_t count) {
  GifPalette* palette = NewRecord<GifPalette>();
  if (!palette || count < 1) return palette;
  palette->colours = NewRecord<Colour>(static_cast<size_t>(count));
  if (!palette->colours) {
    std::free(palette);
    return nullptr;
  }
  palette->count = count;
  return palette;
}

void DeletePalette(GifPalette* palette) {
  if (!palette) return;
  std::free(palette->colours);
  std::free(palette);
}

GifPicture* NewPicture() {
  GifPicture* picture = NewRecord<GifPicture>();
  if (!picture) return nullptr;
  picture->cmap = NewPalette(0);
  if (picture->cmap) return picture;
  std::free(picture);
  return nullptr;
}

void DeletePicture(GifPicture* picture) {
  if (!picture) return;
  DeletePalette(picture->cmap);
  std::free(picture->memory);
  if (picture->tail) std::free(picture->tail->runs), std::free(picture->tail->pixels);
  std::free(picture->tail);
  std::free(picture);
}

void DeleteGifData(GifData* data) {
  if (!data) return;
  std::free(data->bytes);
  std::free(data);
}

void DeleteBlocks(Gif* gif) {
  for (int32_t i = 0; gif->blocks && i < gif->count; ++i) DeleteGifBlock(gif->blocks[i]);
  std::free(gif->blocks);
  gif->blocks = nullptr;
  gif->count = 0;
}

void DeleteSubBlocks(GifExtension* extension) {
  for (int32_t i = 0; extension->data && i < extension->count; ++i) DeleteGifData(extension->data[i]);
  std::free(extension->data);
  extension->data = nullptr;
  extension->count = 0;
}

Gif* NewGif() {
  Gif* gif = NewRecord<Gif>();
  if (!gif) return nullptr;
  std::memcpy(gif->header, "GIF87a", 6);
  gif->screen = NewRecord<GifScreen>();
  if (gif->screen) gif->screen->cmap = NewPalette(0);
  if (gif->screen && gif->screen->cmap) return gif;
  DeleteGif(gif);
  return nullptr;
}

void DeleteGifBlock(GifBlock* block) {
  if (!block) return;
  DeletePicture(block->picture);
  if (block->extension) DeleteSubBlocks(block->extension);
  std::free(block->extension);
  std::free(block);
}

void DeleteGif(Gif* gif) {
  if (!gif) return;
  if (gif->screen) DeletePalette(gif->screen->cmap);
  std::free(gif->screen);
  DeleteBlocks(gif);
  std::free(gif);
}
