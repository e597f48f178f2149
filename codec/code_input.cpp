#include "codec/code_input.h"

#include "codec/sub_blocks.h"

bool CodeInput::Gather(MyFILE* stream) {
  block_pos = 0;
  block_len = 0;
  while (!data_ended && block_len + kMaxSubBlock <= static_cast<int32_t>(sizeof block)) {
    const int32_t length = ReadSubBlock(stream, block + block_len);
    block_len += length;
    data_ended = length == 0;
  }
  return block_len > 0;
}

bool CodeInput::Fill(MyFILE* stream, int32_t width) {
  while (bit_count < width) {
    if (block_pos == block_len && !Gather(stream)) {
      bit_count = width;
      return false;
    }
    bit_buffer |= uint64_t{block[block_pos++]} << bit_count;
    bit_count += 8;
  }
  return true;
}
