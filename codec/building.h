#pragma once

// The steps in which a document is put together, shared by the reader and by the assembly of documents for
// saving. Without memory each gives null or false and leaves its arguments as they were.

#include <cstddef>
#include <cstdint>

#include "codec/document.h"

// Zero-filled memory for `count` items of `size` bytes, released with `free`; null when the product
// overflows.
void* AllocateZeroed(size_t count, size_t size);

template <typename Record>
Record* NewRecord(size_t count = 1) {
  return static_cast<Record*>(AllocateZeroed(count, sizeof(Record)));  // NOLINT(bugprone-sizeof-expression)
}

// A palette of `count` zero entries; without an array when `count` is below 1.
GifPalette* NewPalette(int32_t count);
void DeletePalette(GifPalette* palette);

// A picture of zeros with an empty palette and no rows.
GifPicture* NewPicture();
void DeletePicture(GifPicture* picture);

void DeleteGifData(GifData* data);

// Release what a list holds and the list itself, leaving a count of 0.
void DeleteBlocks(Gif* gif);
void DeleteSubBlocks(GifExtension* extension);

// Bytes behind an image's last pixel, in the same piece of memory, for whoever fills the rows to work with.
constexpr int32_t kPixelSpare = 320;

// Makes `data` and the rows for the picture's `width`, `height` and `interlace`. Nothing is made (and the
// result is true) when `height` is below 1; null rows when `width` is.
enum class RowContents { kZeros, kUnset };  // unset: whoever asks sets every pixel
bool MakeRows(GifPicture* picture, RowContents contents = RowContents::kZeros);

// The row of the image that stands at position `index` (0 to `height` - 1) in the file: the four passes of
// GIF89a, appendix E, when interlaced.
int32_t DisplayRow(int32_t height, bool interlaced, int32_t index);

// Makes room in an array of `count` pointers for one more. Room doubles each time it is used up, so that a
// list of n entries costs time linear in n; `count` alone tells how much room there is.
bool GrowPointers(void** list, int32_t count);

template <typename Record>
bool GrowList(Record**& list, int32_t count) {
  void* pointers = list;
  if (!GrowPointers(&pointers, count)) return false;
  list = static_cast<Record**>(pointers);
  return true;
}
