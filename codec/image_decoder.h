#pragma once

// The rows of a whole image at once: what `ReadGifLine` gives row by row, faster.

#include <cstdint>

#include "codec/byte_stream.h"
#include "codec/lzw_decoder.h"

// Decodes `height` rows of `width` pixels each, both above 0 and below 65536, in file order. `decoder` is as
// `StartImage` leaves it, or has gathered some of the image's sub-blocks already; its contents are used up.
// Every pixel is set, to 0 where the data give none; pixels that the caller has `zeroed` are not touched for
// that. Behind the last pixel there are `kPixelSpare` bytes.
void DecodeImage(MyFILE* stream, GifDecoder* decoder, uint8_t* pixels, int32_t width, int32_t height, bool zeroed);
