#include "codec/lzw_encoder.h"

#include <algorithm>
#include <iterator>

namespace {

// An entry holds the key of a string (its prefix's code times 256 plus its last pixel) and, in its lowest 12
// bits, its code. No key reaches that of an empty entry: prefixes stay below 4095.
constexpr uint64_t kEmptyEntry = 0xFFFFFFFF;
constexpr int32_t kHashMask = 0x1FFF;
constexpr int32_t kLastCode = 4095;

void ClearStrings(GifEncoder* encoder) {
  encoder->next_code = encoder->end_code + 1;
  encoder->code_width = encoder->code_size + 1;
  encoder->width_limit = 1 << encoder->code_width;
  std::fill(std::begin(encoder->hash_table), std::end(encoder->hash_table), kEmptyEntry);
}

void WriteBlock(MyFILE* stream, GifEncoder* encoder) {
  MyPutc(stream, encoder->block_len);
  WriteBytes(stream, encoder->block, encoder->block_len);
  encoder->block_len = 0;
}

void PutBits(MyFILE* stream, GifEncoder* encoder, int32_t least) {
  while (encoder->bit_count >= least) {
    WriteGifByte(stream, encoder, static_cast<int>(encoder->bit_buffer & 0xFF));
    encoder->bit_buffer >>= 8;
    encoder->bit_count -= 8;
  }
}

void Flush(MyFILE* stream, GifEncoder* encoder) {
  PutBits(stream, encoder, 1);
  encoder->bit_count = 0;
  if (encoder->finished) return;
  if (encoder->block_len > 0) WriteBlock(stream, encoder);
  MyPutc(stream, 0);
  encoder->finished = 1;
}

}  // namespace

void StartGifEncoder(GifEncoder* encoder, int code_size) {
  *encoder = {};
  encoder->code_size = code_size;
  encoder->clear_code = 1 << code_size;
  encoder->end_code = encoder->clear_code + 1;
  encoder->prefix_code = kNoPrefix;
  ClearStrings(encoder);
}

void WriteGifLine(MyFILE* stream, GifEncoder* encoder, const uint8_t* line, int len) {
  if (!line || len < 1) return;
  int32_t prefix = encoder->prefix_code;
  int i = 0;
  if (prefix == kNoPrefix) prefix = line[i++];
  for (; i < len; ++i) {
    const int32_t pixel = line[i];
    const int32_t key = prefix * 256 + pixel;
    int32_t hash = ((prefix >> 4) ^ key) & kHashMask;
    uint64_t* table = encoder->hash_table;
    while (table[hash] != kEmptyEntry && static_cast<int32_t>(table[hash] >> 12) != key)
      hash = (hash + 1) & kHashMask;
    if (table[hash] != kEmptyEntry) {
      prefix = static_cast<int32_t>(table[hash] & 0xFFF);
      continue;
    }
    WriteGifCode(stream, encoder, prefix);
    if (encoder->next_code < kLastCode) {
      table[hash] = static_cast<uint64_t>(key) << 12 | static_cast<uint64_t>(encoder->next_code++);
    } else {
      WriteGifCode(stream, encoder, encoder->clear_code);
      ClearStrings(encoder);
    }
    prefix = pixel;
  }
  encoder->prefix_code = prefix;
}

void WriteGifCode(MyFILE* stream, GifEncoder* encoder, int code) {
  if (code == kFlush) {
    Flush(stream, encoder);
  } else {
    encoder->bit_buffer |= static_cast<uint64_t>(code) << encoder->bit_count;
    encoder->bit_count += encoder->code_width;
    PutBits(stream, encoder, 8);
  }
  if (code <= kLastCode && encoder->next_code >= encoder->width_limit) {
    encoder->code_width += 1;
    encoder->width_limit = 1 << encoder->code_width;
  }
}

void WriteGifByte(MyFILE* stream, GifEncoder* encoder, int byte) {
  if (encoder->finished) return;
  if (encoder->block_len == 255) WriteBlock(stream, encoder);
  encoder->block[encoder->block_len++] = static_cast<uint8_t>(byte);
}
