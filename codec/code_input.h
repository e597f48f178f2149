#pragma once

// Where both decoders get their codes from: the data sub-blocks of one image as a run of bits, the first one lowest.

#include <cstdint>

#include "codec/byte_stream.h"
#include "codec/format.h"

struct CodeInput {
  int32_t bit_count;                 // bits held in `bit_buffer`
  uint64_t bit_buffer;               // bits not yet used
  int32_t data_ended;                // 1 once the empty sub-block that ends the data (or the stream's end) was read
  int32_t block_pos;                 // the next byte of `block` to take
  int32_t block_len;                 // bytes in `block`
  uint8_t block[16 * kMaxSubBlock];  // of the sub-blocks read last

  void Start() { bit_count = data_ended = block_pos = block_len = 0, bit_buffer = 0; }

  // Reads the next sub-blocks into the emptied `block`, as many as it is sure to hold. False when there are none.
  bool Gather(MyFILE* stream);

  // Holds at least `width` bits. False when the data had too few left: zeros then follow them.
  bool Fill(MyFILE* stream, int32_t width);

  // The next `width` bits, of those held.
  int32_t Peek(int32_t width) const { return static_cast<int32_t>(bit_buffer & ((uint64_t{1} << width) - 1)); }
  void Drop(int32_t width) {
    bit_buffer >>= width;
    bit_count -= width;
  }
  int32_t Take(int32_t width) {
    const int32_t code = Peek(width);
    Drop(width);
    return code;
  }

  // True when all bits to come are 0.
  bool OnlyZerosFollow() const { return data_ended && block_pos == block_len && bit_buffer == 0; }
};
