#include "codec/document.h"

#include <cstdlib>
#include <cstring>

#include "codec/memory.h"

namespace {

struct DocumentPiece {
  Gif gif;
  GifScreen screen;
  GifPalette palette;
};

struct ExtensionPiece {
  GifBlock block;
  GifExtension extension;
};

struct PicturePiece {
  ExtensionPiece with_extension;
  GifPicture picture;
  GifPalette palette;
};

}  // namespace

bool MakeColours(GifPalette* palette, int32_t count) {
  if (count < 1) return true;
  palette->colours = NewRecord<Colour>(static_cast<size_t>(count));
  palette->count = palette->colours ? count : 0;
  return palette->colours != nullptr;
}

GifBlock* NewGifBlock(bool with_picture, bool with_extension) {
  void* memory = AllocateZeroed(1, with_picture ? sizeof(PicturePiece) : sizeof(ExtensionPiece));
  if (!memory) return nullptr;
  auto* block = &static_cast<ExtensionPiece*>(memory)->block;
  if (with_extension) block->extension = &static_cast<ExtensionPiece*>(memory)->extension;
  if (!with_picture) return block;
  auto* piece = static_cast<PicturePiece*>(memory);
  block->picture = &piece->picture;
  piece->picture.cmap = &piece->palette;
  return block;
}

void DropPicture(GifBlock* block) {
  GifPicture* picture = block->picture;
  if (!picture) return;
  if (picture->cmap) std::free(picture->cmap->colours);
  std::free(picture->memory);
  if (picture->tail) std::free(picture->tail->runs), std::free(picture->tail->pixels);
  std::free(picture->tail);
  block->picture = nullptr;
}

void DeleteGifBlock(GifBlock* block) {
  if (!block) return;
  DropPicture(block);
  if (block->extension) DeleteSubBlocks(block->extension);
  std::free(block);
}

GifData* NewGifData(int32_t length) {
  auto* data = static_cast<GifData*>(std::malloc(sizeof(GifData) + static_cast<size_t>(length)));
  if (data) *data = {length, reinterpret_cast<uint8_t*>(data + 1)};
  return data;
}

void DeleteGifData(GifData* data) { std::free(data); }

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
  auto* piece = NewRecord<DocumentPiece>();
  if (!piece) return nullptr;
  std::memcpy(piece->gif.header, "GIF87a", 6);
  piece->gif.screen = &piece->screen;
  piece->screen.cmap = &piece->palette;
  return &piece->gif;
}

void DeleteGif(Gif* gif) {
  if (!gif) return;
  if (gif->screen->cmap) std::free(gif->screen->cmap->colours);
  DeleteBlocks(gif);
  std::free(gif);
}
