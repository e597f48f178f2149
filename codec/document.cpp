#include "codec/document.h"

#include <cstdlib>
#include <cstring>

#include "codec/building.h"

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

static void DeletePicture(GifPicture* picture) {
  if (!picture) return;
  DeletePalette(picture->cmap);
  std::free(picture->pixels);
  std::free(picture->data);
  std::free(picture);
}

static void DeleteExtension(GifExtension* extension) {
  if (!extension) return;
  for (int32_t i = 0; extension->data && i < extension->count; ++i) {
    if (extension->data[i]) std::free(extension->data[i]->bytes);
    std::free(extension->data[i]);
  }
  std::free(extension->data);
  std::free(extension);
}

void DeleteGifBlock(GifBlock* block) {
  if (!block) return;
  DeletePicture(block->picture);
  DeleteExtension(block->extension);
  std::free(block);
}

void DeleteGif(Gif* gif) {
  if (!gif) return;
  if (gif->screen) DeletePalette(gif->screen->cmap);
  std::free(gif->screen);
  for (int32_t i = 0; gif->blocks && i < gif->count; ++i) DeleteGifBlock(gif->blocks[i]);
  std::free(gif->blocks);
  std::free(gif);
}
