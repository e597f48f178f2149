#pragma once

// The rows of a whole image at once: what `ReadGifLine` gives row by row, faster.

#include <cstdint>

#include "codec/byte_stream.h"
#include "codec/code_input.h"
#include "codec/document.h"

// Gives a picture of 1 to 65535 pixels each way the pixels of its data, in file order: as many as the data give, so
// that memory follows what is decoded. `input` is as `Start` leaves it; `code_size` is the data's minimum code size,
// 0 to `kMaxMinimumCodeSize`. False without memory; the picture may then have got part of its pixels.
bool DecodeImage(MyFILE* stream, CodeInput* input, int32_t code_size, GifPicture* picture);
