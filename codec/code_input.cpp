#include "codec/code_input.h"

#include <cstring>

#include "codec/sub_blocks.h"

bool CodeInput::Gather(MyFILE* stream) {
  const int32_t kept = keep_from == kKeepNone ? 0 : block_len - keep_from;
  std::memmove(block, block + block_len - kept, static_cast<size_t>(kept));
  if (keep_from != kKeepNone) keep_from = 0;
  block_pos = block_len = kept;
  while (!data_ended && block_len + kMaxSubBlock <= kMostBytes) {
    const int32_t length = ReadSubBlock(stream, block + block_len);
    block_len += length;
    data_ended = length == 0;
  }
  return block_len > kept;
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
