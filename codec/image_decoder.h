#pragma once

// The rows of a whole image at once: what `ReadGifLine` gives row by row, faster.

#include <cstdint>

#include "codec/byte_stream.h"

// Decodes `height` rows of `width` pixels each, both above 0 and below 65536, in file order. `pixels` are
// zeros, with `kPixelSpare` bytes behind them. The stream stands after the minimum code size, `code_size`,
// which is at most `kMaxMinimumCodeSize`. Afterwards it stands before or within the rest of the image's data,
// at the start of a sub-block, or after that data when the result is true.
bool DecodeImage(MyFILE* stream, int32_t code_size, uint8_t* pixels, int32_t width, int32_t height);
