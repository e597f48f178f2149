#pragma once

// Where both decoders get their codes from: the data sub-blocks of one image as a run of bits, the first one lowest.

#include <cstdint>

#include "codec/byte_stream.h"
#include "codec/format.h"

struct CodeInput {
  static constexpr int32_t kKeepNone = -1;
  static constexpr int32_t kMostKept = kTableSize * kMaxCodeWidth / 8 + 2;  // all codes between two clear codes
  static constexpr int32_t kMostBytes = kMostKept + 16 * kMaxSubBlock;

  int32_t bit_count;    // bits held in `bit_buffer`
  uint64_t bit_buffer;  // bits not yet used
  int32_t data_ended;   // 1 once the empty sub-block that ends the data (or the stream's end) was read
  int32_t block_pos;    // the next byte of `block` to take
  int32_t block_len;    // bytes in `block`
  int32_t keep_from;    // the first byte of `block` that stays when it is filled anew; `kKeepNone`
  // The bytes kept, those of the sub-blocks read last, and as many as a load of eight may reach too far.
  uint8_t block[kMostBytes + 8];

  void Start() { bit_count = data_ended = block_pos = block_len = keep_from = 0, bit_buffer = 0; }

  // Reads the next sub-blocks into `block`, all of which was taken, behind what is kept: as many as it is sure to
  // hold. False when there are none.
  bool Gather(MyFILE* stream);

  // From now on what is kept begins with the next bit to be taken: its place in a byte.
  int32_t KeepFromHere() {
    const int32_t bit = 8 * block_pos - bit_count;
    keep_from = bit / 8;
    return bit % 8;
  }

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
