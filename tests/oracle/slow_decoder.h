#pragma once

// The row decoder step by step, one byte and one table entry at a time: slow, obvious, and independent of the
// product's. It judges the product's decoders, and counts what it meets so that a test can tell what it has
// covered.

#include <array>
#include <cstdint>
#include <vector>

#include "codec/byte_stream.h"

namespace oracle {

enum Event {
  kEndOneShort,      // an end code where the row's last pixel is missing
  kEndEarly,         // an end code before that
  kUndefinedCode,    // a code neither defined nor being defined
  kUndefinedLink,    // a string that ends at an entry never defined
  kTableFull,        // a code after the last entry was defined
  kErrorAfterClear,  // an error in a call that met a clear code
  kErrorAfterDrain,  // an error in a call that began with pixels on the stack
  kStraddle,         // a string that goes on in the next row
  kSeveralRows,      // a string that fills whole rows
  kOwnEntry,         // a code whose entry it defines itself
  kDataEnded,        // a code read wholly from beyond the data
  kEventCount
};

struct GifDecoder {
  int32_t code_size, clear_code, end_code, code_count, code_width, width_limit, last_code, stack_depth, bit_count;
  uint64_t bit_buffer;
  int32_t data_ended, block_pos, block_len;
  std::array<uint8_t, 256> block;
  std::array<uint8_t, 4096> stack, suffix;
  std::array<int32_t, 4096> prefix;
  std::array<int64_t, kEventCount> events;
};

void SetUp(GifDecoder* decoder, int32_t code_size);
void ReadGifLine(MyFILE* stream, GifDecoder* decoder, unsigned char* line, int len);

// Reads the rest of an image's data.
void SkipRest(MyFILE* stream, GifDecoder* decoder);

// Whether a row beyond the data has left the decoder as it was: all rows after it are like it.
bool RepeatsForGood(const GifDecoder& before, const GifDecoder& after);

// An image's pixels in file order from the data after its minimum code size. The stream then stands after the
// data.
std::vector<uint8_t> ReadImage(MyFILE* stream, GifDecoder* decoder, int32_t width, int32_t height);

}  // namespace oracle
