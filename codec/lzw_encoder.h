#pragma once

// The LZW encoder of GIF89a, appendix F: an image's pixels as codes of growing width, packed into bytes, lowest bit
// first, and the bytes into data sub-blocks.
//
// One encoder serves one image:
//
//   StartGifEncoder(encoder, code_size);
//   WriteGifCode(stream, encoder, encoder->clear_code);
//   WriteGifLine(stream, encoder, row, width);  // each row, in file order
//   if (encoder->prefix_code != kNoPrefix) WriteGifCode(stream, encoder, encoder->prefix_code);
//   WriteGifCode(stream, encoder, encoder->end_code);
//   WriteGifCode(stream, encoder, kFlush);

#include <cstdint>

#include "codec/byte_stream.h"
#include "codec/lzw_runs.h"

constexpr int32_t kFlush = 4096;     // in place of a code: write out everything and end the image data
constexpr int32_t kNoPrefix = 4097;  // in place of a prefix: no pixel has been taken yet

// About 121 KiB; owned by its user, who need not fill it in.
struct GifEncoder {
  int32_t code_size;    // the minimum code size of the image, 2 to 11
  int32_t clear_code;   // 2 to the power `code_size`
  int32_t end_code;     // the code after it
  int32_t next_code;    // what the next new string gets; never above 4095
  int32_t code_width;   // bits of the next code written, up to 12
  int32_t width_limit;  // 2 to the power `code_width`
  int32_t prefix_code;  // the string matched so far, or `kNoPrefix`
  int32_t bit_count;    // bits in `bit_buffer` that are not yet in `block`, 0 to 7
  uint64_t bit_buffer;  // the next bit to write is the lowest
  int32_t finished;     // 1 once the image data has ended: nothing more is written
  int32_t block_len;    // bytes in `block`

  // How strings are found: lzw_encoder.cpp tells.
  uint32_t hash_table[16384];
  RunStrings runs;
  int64_t pixels_since_clear;  // pixels that the present strings have coded

  uint8_t block[4608];  // image data still to be written, several sub-blocks of it
};

// Readies an encoder for an image whose pixels are coded with at least `code_size` (2 to 11) bits.
void StartGifEncoder(GifEncoder* encoder, int code_size);

// Adds `len` pixels, which go on where the line before ended. Does nothing for a null line or a length below 1. A
// pixel that does not fit the code size is written with the bits it has and spoils the codes after it.
void WriteGifLine(MyFILE* stream, GifEncoder* encoder, const uint8_t* line, int len);

// Writes one code at the present width, or flushes everything and ends the image data when `code` is `kFlush`.
void WriteGifCode(MyFILE* stream, GifEncoder* encoder, int code);

// Adds one byte to the image data.
void WriteGifByte(MyFILE* stream, GifEncoder* encoder, int byte);
