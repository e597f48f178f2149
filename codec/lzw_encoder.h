#pragma once

// The LZW encoder of GIF89a, appendix F: an image's pixels as codes of growing width, packed into bytes, lowest bit
// first, and the bytes into data sub-blocks.
//
// One encoder serves one image:
//
//   StartGifEncoder(encoder, code_size);
//   WriteGifCode(stream, encoder, encoder->strings.clear_code);
//   WriteGifLine(stream, encoder, row, width);  // each row, in file order
//   if (encoder->strings.prefix_code != kNoPrefix) WriteGifCode(stream, encoder, encoder->strings.prefix_code);
//   WriteGifCode(stream, encoder, encoder->strings.end_code);
//   WriteGifCode(stream, encoder, kFlush);

#include <cstddef>
#include <cstdint>

#include "codec/byte_stream.h"
#include "codec/lzw_runs.h"
#include "codec/lzw_strings.h"
#include "codec/lzw_tables.h"

constexpr int32_t kFlush = 4096;  // in place of a code: write out everything and end the image data

// How strings are found at present.
enum class StringsBy { kTable, kPairs, kRuns, kBits };

// About 256 KiB, owned by its user, who need not fill it in. For an image of few pixels the first `EncoderSize` bytes
// are enough: memory that large comes new from the system each time, which takes longer than coding an icon.
struct GifEncoder {
  int32_t code_size;    // the minimum code size of the image, 2 to 11
  int32_t code_width;   // bits of the next code written, up to 12
  int32_t width_limit;  // 2 to the power `code_width`
  int32_t bit_count;    // bits in `bit_buffer` that are not yet in `block`, 0 to 7
  uint64_t bit_buffer;  // the next bit to write is the lowest
  int32_t finished;     // 1 once the image data has ended: nothing more is written
  int32_t block_len;    // bytes in `block`

  LzwStrings strings;
  int32_t first_unwritten;  // the string whose prefix's code is to be written next; all up to `next_code` are
  int32_t pixels_used;      // all pixels of all lines, one OR the other

  StringsBy by;
  int64_t pixels_since_choice;  // and the strings added since then
  int32_t choice_code;
  bool small_image;     // the encoder is that of few pixels
  uint8_t block[8192];  // image data still to be written, up to many sub-blocks of it

  StringTable table;
  union {  // of which `by` tells the one in use; none by the table alone
    PairStrings pairs;
    RunStrings runs;
    BitStrings bits;
  };
  uint32_t
      entries[StringTable::kMostEntries];  // the table's; those of a small image take the place of the runs' rows
};

constexpr int64_t kSmallImage = StringTable::kFewEntries / 2;  // pixels at most
constexpr size_t kSmallEntries = offsetof(GifEncoder, runs) + offsetof(RunStrings, first_other) + sizeof(FirstOthers);

constexpr size_t EncoderSize(int64_t pixels) {
  constexpr size_t kSmallSize = kSmallEntries + StringTable::kFewEntries * sizeof(uint32_t);
  return pixels <= kSmallImage ? kSmallSize : sizeof(GifEncoder);
}

// Readies an encoder for an image whose pixels are coded with at least `code_size` (2 to 11) bits, and of which there
// are at most `pixels`.
void StartGifEncoder(GifEncoder* encoder, int code_size, int64_t pixels = INT64_MAX);

// Adds `len` pixels, which go on where the line before ended. Does nothing for a null line or a length below 1. A
// pixel that does not fit the code size is written with the bits it has and spoils the codes after it.
void WriteGifLine(MyFILE* stream, GifEncoder* encoder, const uint8_t* line, int len);

// Writes one code at the present width, or flushes everything and ends the image data when `code` is `kFlush`.
void WriteGifCode(MyFILE* stream, GifEncoder* encoder, int code);

// Adds one byte to the image data.
void WriteGifByte(MyFILE* stream, GifEncoder* encoder, int byte);
