#include "codec/picture_rows.h"

#include <cstdlib>
#include <initializer_list>

#include "codec/memory.h"

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
