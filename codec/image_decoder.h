#pragma once

// The rows of a whole image at once: what `ReadGifLine` gives row by row, faster.

#include <cstdint>

#include "codec/byte_stream.h"
#include "codec/code_input.h"

// Decodes `height` rows of `width` pixels each, both above 0 and below 65536, in file order. `input` is as `Start`
// leaves it, or has gathered some of the image's sub-blocks already; `code_size` is the data's minimum code size, 0
// to `kMaxMinimumCodeSize`. Every pixel is set, to 0 where the data give none; pixels that the caller has `zeroed`
// are not touched for that. Behind the last pixel there are `kPixelSpare` bytes.
void DecodeImage(MyFILE* stream, CodeInput* input, int32_t code_size, uint8_t* pixels, int32_t width, int32_t height,
                 bool zeroed);
