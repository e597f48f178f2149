#include "codec/lzw_encoder.h"

#include <algorithm>
#include <cstring>

#include "codec/format.h"
#include "codec/lzw_strings.h"
#include "codec/sub_blocks.h"

// How it is made fast, without a byte of the result being different:
//
// - The hash table is four times as large as its strings are many, so that probing seldom goes on, and small
//   enough to be cleared by `memset`.
// - Pictures of even areas are coded by runs: lzw_runs.h. Which way to go is chosen at each clear code, by how the
//   strings before it did.
// - Codes go into `block` by whole words, without a look at where sub-blocks end; those are cut when `block` is full.

namespace {

// Lines are coded in pieces whose codes surely fit into `block`: a pixel adds two bytes at most.
constexpr int64_t kPiece = 2048;
constexpr int32_t kPieceRoom = 2 * kPiece + 16;
static_assert(kMaxSubBlock + kPieceRoom < static_cast<int32_t>(sizeof GifEncoder::block));

// Fewer pixels than this for each code are not worth looking for runs.
constexpr int64_t kPixelsPerCodeInRuns = 4;

// Codes pixels until `end`, or until all strings must be cleared; the result is where it stopped.
const uint8_t* CodePixels(GifEncoder* encoder, const uint8_t* at, const uint8_t* end) {
  CodeWriter codes(encoder);
  uint32_t* const table = encoder->hash_table;
  auto prefix = static_cast<uint32_t>(encoder->prefix_code);
  while (at < end) {
    const uint32_t pixel = *at++;
    const uint32_t key = Key(prefix, pixel);
    uint32_t slot;
    if (FindString(table, key, slot)) {
      prefix = table[slot] & kCodeMask;
      continue;
    }
    codes.Put(prefix);
    table[slot] = key << kCodeBits | codes.next_code();
    prefix = pixel;
    if (!codes.Advance()) break;
  }
  encoder->prefix_code = static_cast<int32_t>(prefix);
  return at;
}

bool AllFit(const GifEncoder* encoder, const uint8_t* at, const uint8_t* end) {
  uint8_t bits = 0;
  for (; at < end; ++at) bits |= *at;
  return bits < encoder->clear_code;
}

bool IsMostlyRuns(const uint8_t* line, int len) {
  int same = 0;
  for (int i = 1; i < len; ++i) same += line[i] == line[i - 1];
  return same > len / 2;
}

void ClearStrings(GifEncoder* encoder) {
  encoder->next_code = encoder->end_code + 1;
  encoder->code_width = encoder->code_size + 1;
  encoder->width_limit = 1 << encoder->code_width;
  encoder->runs.in_use = 0;
  encoder->pixels_since_clear = 0;
  std::memset(encoder->hash_table, 0xFF, sizeof encoder->hash_table);
}

// Clears when the codes have run out. The string in hand is one pixel then.
void StartOver(MyFILE* stream, GifEncoder* encoder) {
  WriteGifCode(stream, encoder, encoder->clear_code);
  const bool runs = encoder->pixels_since_clear >= kPixelsPerCodeInRuns * (kLastCode - encoder->end_code);
  ClearStrings(encoder);
  if (runs && encoder->prefix_code < encoder->clear_code) UseRuns(encoder);
}

// Writes the full sub-blocks and keeps the rest.
void WriteFullSubBlocks(MyFILE* stream, GifEncoder* encoder) {
  const int32_t rest = encoder->block_len % kMaxSubBlock, full = encoder->block_len - rest;
  if (full > 0) WriteSubBlocks(stream, encoder->block, full);
  std::memmove(encoder->block, encoder->block + full, static_cast<size_t>(rest));
  encoder->block_len = rest;
}

void PutWholeBytes(MyFILE* stream, GifEncoder* encoder) {
  for (; encoder->bit_count >= 8; encoder->bit_count -= 8, encoder->bit_buffer >>= 8) {
    WriteGifByte(stream, encoder, static_cast<int>(encoder->bit_buffer & 0xFF));
  }
}

void Flush(MyFILE* stream, GifEncoder* encoder) {
  if (encoder->bit_count > 0) WriteGifByte(stream, encoder, static_cast<int>(encoder->bit_buffer & 0xFF));
  encoder->bit_count = 0;
  if (encoder->finished) return;
  if (encoder->block_len > 0) WriteSubBlocks(stream, encoder->block, encoder->block_len);
  EndSubBlocks(stream);
  encoder->block_len = 0;
  encoder->finished = 1;
}

}  // namespace

void StartGifEncoder(GifEncoder* encoder, int code_size) {
  encoder->code_size = code_size;
  encoder->clear_code = 1 << code_size;
  encoder->end_code = encoder->clear_code + 1;
  encoder->prefix_code = kNoPrefix;
  encoder->bit_count = 0;
  encoder->bit_buffer = 0;
  encoder->finished = 0;
  encoder->block_len = 0;
  ClearStrings(encoder);
}

void WriteGifLine(MyFILE* stream, GifEncoder* encoder, const uint8_t* line, int len) {
  if (!line || len < 1 || encoder->finished) return;
  const uint8_t* at = line;
  const uint8_t* const end = line + len;
  if (encoder->prefix_code == kNoPrefix) {
    encoder->prefix_code = *at++;
    if (IsMostlyRuns(line, len) && encoder->prefix_code < encoder->clear_code) UseRuns(encoder);
  }
  while (at < end) {
    if (encoder->block_len + kPieceRoom > static_cast<int32_t>(sizeof encoder->block)) {
      WriteFullSubBlocks(stream, encoder);
    }
    const uint8_t* const piece_end = at + std::min<int64_t>(end - at, kPiece);
    if (encoder->runs.in_use && !AllFit(encoder, at, piece_end)) LeaveRuns(encoder);
    const uint8_t* const stop = (encoder->runs.in_use ? CodeRuns : CodePixels)(encoder, at, piece_end);
    encoder->pixels_since_clear += stop - at;
    at = stop;
    if (encoder->next_code > kLastCode) StartOver(stream, encoder);
  }
}

void WriteGifCode(MyFILE* stream, GifEncoder* encoder, int code) {
  if (code == kFlush) return Flush(stream, encoder);
  encoder->bit_buffer |= static_cast<uint64_t>(code) << encoder->bit_count;
  encoder->bit_count += encoder->code_width;
  PutWholeBytes(stream, encoder);
  if (encoder->next_code >= encoder->width_limit) {
    encoder->code_width += 1;
    encoder->width_limit = 1 << encoder->code_width;
  }
}

void WriteGifByte(MyFILE* stream, GifEncoder* encoder, int byte) {
  if (encoder->finished) return;
  if (encoder->block_len == static_cast<int32_t>(sizeof encoder->block)) WriteFullSubBlocks(stream, encoder);
  encoder->block[encoder->block_len++] = static_cast<uint8_t>(byte);
}
