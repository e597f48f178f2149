#include "codec/building.h"

#include <cstdlib>
#include <initializer_list>

void* AllocateZeroed(size_t count, size_t size) { return std::calloc(count, size); }

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
  std::free(picture->pixels);
  std::free(picture->data);
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

int32_t DisplayRow(int32_t height, bool interlaced, int32_t index) {
  if (!interlaced) return index;
  struct Pass {
    int32_t first, step;
  };
  for (const Pass pass : {Pass{0, 8}, Pass{4, 8}, Pass{2, 4}, Pass{1, 2}}) {
    const auto rows = static_cast<int32_t>((int64_t{height} - pass.first + pass.step - 1) / pass.step);
    if (index < rows) return pass.first + index * pass.step;
    index -= rows;
  }
  return height;  // not reached for an index below the height
}

bool MakeRows(GifPicture* picture, RowContents contents) {
  if (picture->height < 1) return true;
  const auto height = static_cast<size_t>(picture->height);
  const auto width = static_cast<size_t>(picture->width < 1 ? 0 : picture->width);
  const size_t size = height * width + kPixelSpare;  // both are below 2^31
  uint8_t** rows = NewRecord<uint8_t*>(height);
  void* pixels = nullptr;
  if (rows && width > 0) pixels = contents == RowContents::kZeros ? AllocateZeroed(size, 1) : std::malloc(size);
  if (!rows || (width > 0 && !pixels)) {
    std::free(rows);
    return false;
  }
  picture->data = rows;
  picture->pixels = static_cast<uint8_t*>(pixels);
  for (size_t i = 0; pixels && i < height; ++i) {
    const int32_t row = DisplayRow(picture->height, picture->interlace != 0, static_cast<int32_t>(i));
    rows[row] = picture->pixels + i * width;
  }
  return true;
}

bool GrowPointers(void** list, int32_t count) {
  const auto used = static_cast<size_t>(count);
  const bool full = (used & (used - 1)) == 0;  // room is 0, 1, 2, 4, 8 ... entries
  if (!full) return true;
  const size_t room = used == 0 ? 1 : used * 2;
  void* grown = std::realloc(*list, room * sizeof(void*));
  if (!grown) return false;
  *list = grown;
  return true;
}
