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
