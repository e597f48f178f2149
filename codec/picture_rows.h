#pragma once

// The pixel rows of an image, and where they lie.

#include <cstdint>

#include "codec/document.h"

// Bytes behind an image's last pixel, in the same piece of memory, for whoever fills the rows to work with.
constexpr int32_t kPixelSpare = 320;

// Makes `data` and the rows for the picture's `width`, `height` and `interlace`. Nothing is made (and the
// result is true) when `height` is below 1; null rows when `width` is.
enum class RowContents { kZeros, kUnset };  // unset: whoever asks sets every pixel
bool MakeRows(GifPicture* picture, RowContents contents = RowContents::kZeros);

// The row of the image that stands at position `index` (0 to `height` - 1) in the file: the four passes of
// GIF89a, appendix E, when interlaced.
int32_t DisplayRow(int32_t height, bool interlaced, int32_t index);
