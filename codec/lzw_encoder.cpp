#include "codec/lzw_encoder.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "codec/sub_blocks.h"

// How it is made fast, without a byte of the result being different:
//
// - There are four ways of finding strings, for different kinds of pictures; which to go is chosen again and
//   again, by how the strings before did.
// - Those ways only note which strings they add. Codes are made of them many at a time, and go into `block` by whole
//   words, without a look at where sub-blocks end; those are cut when `block` is written.

namespace {

static_assert(std::endian::native == std::endian::little, "codes are stored lowest byte first");

// With so many pixels for each code runs are worth looking for; the first strings after a clear code are short, so
// that fewer are enough to go on.
constexpr int64_t kPixelsPerCodeInRuns = 4, kPixelsPerCodeToGoOn = 2;

// The first choice is made when so many strings have been added, and the next whenever they are twice as many: taking
// them over costs less than finding them did. Later in large images: their tables take time to clear.
constexpr int32_t kFirstChoice = 128, kFirstChoiceOfLargeImage = 1024;

// --- Codes on their way out ---------------------------------------------------------------------------------------

// Writes codes of one width: the prefixes of the strings up to `end`. Each is merged into the bits whole, what
// exceeds the width included. Stores eight bytes at a time, of which the first few count.
void PackCodes(GifEncoder* encoder, int32_t end) {
  constexpr int32_t kTogether = 4;  // 48 bits at most, beside the 7 that wait
  const uint32_t* const keys = encoder->strings.keys;
  const auto width = static_cast<uint32_t>(encoder->code_width);
  uint8_t* to = encoder->block + encoder->block_len;
  uint64_t bits = encoder->bit_buffer;
  auto count = static_cast<uint32_t>(encoder->bit_count);
  const auto store = [&](uint64_t codes, uint32_t more) {
    bits |= codes << count;
    count += more;
    std::memcpy(to, &bits, sizeof bits);
    to += count / 8;
    bits >>= count & ~7U;
    count %= 8;
  };
  int32_t i = encoder->first_unwritten;
  for (; end - i >= kTogether; i += kTogether) {
    uint64_t codes = 0;
    for (uint32_t k = 0; k < kTogether; ++k)
      codes |= uint64_t{KeyPrefix(keys[i + static_cast<int32_t>(k)])} << k * width;
    store(codes, kTogether * width);
  }
  for (; i < end; ++i) store(KeyPrefix(keys[i]), width);
  encoder->first_unwritten = end;
  encoder->block_len = static_cast<int32_t>(to - encoder->block);
  encoder->bit_buffer = bits;
  encoder->bit_count = static_cast<int32_t>(count);
}

void SetWidth(GifEncoder* encoder, int32_t width) {
  encoder->code_width = width;
  encoder->width_limit = 1 << width;
}

// Writes the full sub-blocks and keeps the rest.
void WriteFullSubBlocks(MyFILE* stream, GifEncoder* encoder) {
  const int32_t rest = encoder->block_len % kMaxSubBlock, full = encoder->block_len - rest;
  if (full > 0) WriteSubBlocks(stream, encoder->block, full);
  std::memmove(encoder->block, encoder->block + full, static_cast<size_t>(rest));
  encoder->block_len = rest;
}

// Writes the codes of all strings added. `block` has room for those of a whole table.
void WriteStrings(MyFILE* stream, GifEncoder* encoder) {
  constexpr int32_t kMostBytes = kTableSize * kMaxCodeWidth / 8 + static_cast<int32_t>(sizeof(uint64_t));
  static_assert(kMaxSubBlock + kMostBytes < static_cast<int32_t>(sizeof GifEncoder::block));
  WriteFullSubBlocks(stream, encoder);
  while (encoder->first_unwritten < encoder->strings.next_code) {
    PackCodes(encoder, std::min(encoder->strings.next_code, encoder->width_limit + 1));
    if (encoder->first_unwritten > encoder->width_limit) SetWidth(encoder, encoder->code_width + 1);
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

// --- Which way to find strings ------------------------------------------------------------------------------------

bool IsMostlyRuns(const uint8_t* at, const uint8_t* end) {
  constexpr int64_t kSample = 1024, kPixelsPerRun = 4;
  const int64_t pixels = std::min<int64_t>(end - at, kSample);
  int64_t changes = 0;
  for (int64_t i = 1; i < pixels; ++i) changes += at[i] != at[i - 1];
  return changes * kPixelsPerRun < pixels;
}

bool IsLargeImage(const GifEncoder* encoder) { return encoder->table.mask + 1 == StringTable::kMostEntries; }

// The best way for the pixels to come.
StringsBy Choose(const GifEncoder* encoder, const uint8_t* at, const uint8_t* end) {
  const LzwStrings& strings = encoder->strings;
  const StringsBy any = IsLargeImage(encoder) ? StringsBy::kPairs : StringsBy::kTable;
  if (encoder->pixels_used >= strings.clear_code) return any;
  const int32_t added = strings.next_code - encoder->choice_code;
  const bool first = added == 0;  // nothing is known but what comes
  const bool runs = (first || encoder->pixels_used < 2) && IsMostlyRuns(at, end);
  if (encoder->pixels_used < 2 && !runs && !encoder->small_image) return StringsBy::kBits;
  if (first) return runs ? StringsBy::kRuns : any;
  const int64_t enough = encoder->by == StringsBy::kRuns ? kPixelsPerCodeToGoOn : kPixelsPerCodeInRuns;
  return encoder->pixels_since_choice >= enough * added ? StringsBy::kRuns : any;
}

void Use(GifEncoder* encoder, StringsBy by) {
  if (by == StringsBy::kTable) UseTable(encoder->table, encoder->strings);
  if (by == StringsBy::kPairs) UsePairs(encoder->pairs, encoder->table, encoder->strings);
  if (by == StringsBy::kRuns) UseRuns(encoder->runs, encoder->table, encoder->strings, !encoder->small_image);
  if (by == StringsBy::kBits) UseBits(encoder->bits, encoder->strings);
  encoder->by = by;
}

// Says when to choose next.
void SetPause(GifEncoder* encoder) {
  LzwStrings& strings = encoder->strings;
  const int32_t added = strings.next_code - strings.end_code - 1;
  const int32_t first = IsLargeImage(encoder) ? kFirstChoiceOfLargeImage : kFirstChoice;
  strings.pause_code = std::min(strings.next_code + std::max(added, first), kLastCode + 1);
  encoder->pixels_since_choice = 0;
  encoder->choice_code = strings.next_code;
}

// The table grows with the strings: four times as large when a quarter is full, or half of a small image's, for which
// filling it anew costs more than searching longer.
bool Grow(GifEncoder* encoder) {
  const uint32_t most = encoder->small_image ? StringTable::kFewEntries : StringTable::kMostEntries;
  const uint32_t entries = encoder->table.mask + 1;
  const auto strings = static_cast<uint32_t>(encoder->strings.next_code - encoder->strings.end_code);
  if (entries == most || strings <= entries / (encoder->small_image ? 2 : 4)) return false;
  encoder->table.mask = std::min(4 * entries, most) - 1;
  return true;
}

void ChooseAgain(GifEncoder* encoder, const uint8_t* at, const uint8_t* end) {
  const bool first = encoder->strings.next_code == encoder->choice_code;  // nothing is ready yet
  const bool grows = Grow(encoder);
  const StringsBy by = Choose(encoder, at, end);
  if (first || grows || by != encoder->by) Use(encoder, by);
  SetPause(encoder);
}

void ForgetStrings(GifEncoder* encoder) {
  LzwStrings& strings = encoder->strings;
  strings.next_code = encoder->first_unwritten = strings.end_code + 1;
  SetWidth(encoder, encoder->code_size + 1);
}

// Clears when the codes have run out. The string in hand is one pixel then.
void StartOver(MyFILE* stream, GifEncoder* encoder, const uint8_t* at, const uint8_t* end) {
  WriteGifCode(stream, encoder, encoder->strings.clear_code);
  const StringsBy by = Choose(encoder, at, end);
  ForgetStrings(encoder);
  if (by == StringsBy::kPairs && encoder->by == by) {
    ClearPairs(encoder->pairs, encoder->table);
  } else {
    Use(encoder, by);
  }
  SetPause(encoder);
}

const uint8_t* CodePixels(GifEncoder* encoder, const uint8_t* at, const uint8_t* end) {
  LzwStrings& strings = encoder->strings;
  switch (encoder->by) {
    case StringsBy::kTable:
      return CodeWithTable(encoder->table, strings, at, end);
    case StringsBy::kPairs:
      return CodePairs(encoder->pairs, encoder->table, strings, at, end);
    case StringsBy::kRuns:
      return CodeRuns(encoder->runs, encoder->table, strings, at, end);
    case StringsBy::kBits:
      return CodeBits(encoder->bits, strings, at, end);
  }
  return end;
}

// Some ways take only pixels that fit, or only two. They have taken no other so far.
void LookAtPixels(GifEncoder* encoder, const uint8_t* at, const uint8_t* end) {
  if (encoder->code_size >= 8) return;
  uint8_t used = 0;
  for (const uint8_t* pixel = at; pixel < end; ++pixel) used |= *pixel;
  encoder->pixels_used |= used;
  const bool any = encoder->by == StringsBy::kTable || encoder->by == StringsBy::kPairs;
  const int32_t limit = encoder->by == StringsBy::kBits ? 2 : encoder->strings.clear_code;
  if (!any && encoder->pixels_used >= limit) Use(encoder, StringsBy::kTable);
}

}  // namespace

void StartGifEncoder(GifEncoder* encoder, int code_size, int64_t pixels) {
  LzwStrings& strings = encoder->strings;
  encoder->code_size = code_size;
  strings.clear_code = 1 << code_size;
  strings.end_code = strings.clear_code + 1;
  strings.prefix_code = kNoPrefix;
  encoder->bit_count = 0;
  encoder->bit_buffer = 0;
  encoder->finished = 0;
  encoder->block_len = 0;
  encoder->pixels_used = code_size < 8 ? 0 : 0xFF;  // all fit, and none are looked at
  encoder->small_image = pixels <= kSmallImage;
  auto* const small_entries = reinterpret_cast<uint32_t*>(reinterpret_cast<uint8_t*>(encoder) + kSmallEntries);
  encoder->table.entries = encoder->small_image ? small_entries : encoder->entries;
  encoder->table.mask = (encoder->small_image ? StringTable::kFewest : StringTable::kFewEntries) - 1;
  encoder->by = StringsBy::kTable;
  ForgetStrings(encoder);
  SetPause(encoder);
}

void WriteGifLine(MyFILE* stream, GifEncoder* encoder, const uint8_t* line, int len) {
  if (!line || len < 1 || encoder->finished) return;
  const uint8_t* at = line;
  const uint8_t* const end = line + len;
  LzwStrings& strings = encoder->strings;
  LookAtPixels(encoder, at, end);
  if (strings.prefix_code == kNoPrefix) {
    strings.prefix_code = *at++;
    ChooseAgain(encoder, at, end);
  }
  while (at < end) {
    const uint8_t* const stop = CodePixels(encoder, at, end);
    encoder->pixels_since_choice += stop - at;
    at = stop;
    if (strings.next_code > kLastCode) {
      StartOver(stream, encoder, at, end);
    } else if (strings.next_code == strings.pause_code) {
      ChooseAgain(encoder, at, end);
    }
  }
}

void WriteGifCode(MyFILE* stream, GifEncoder* encoder, int code) {
  if (code == kFlush) return Flush(stream, encoder);
  WriteStrings(stream, encoder);
  encoder->bit_buffer |= static_cast<uint64_t>(code) << encoder->bit_count;
  encoder->bit_count += encoder->code_width;
  for (; encoder->bit_count >= 8; encoder->bit_count -= 8, encoder->bit_buffer >>= 8) {
    WriteGifByte(stream, encoder, static_cast<int>(encoder->bit_buffer & 0xFF));
  }
  if (encoder->strings.next_code >= encoder->width_limit) SetWidth(encoder, encoder->code_width + 1);
}

void WriteGifByte(MyFILE* stream, GifEncoder* encoder, int byte) {
  if (encoder->finished) return;
  if (encoder->block_len == static_cast<int32_t>(sizeof encoder->block)) WriteFullSubBlocks(stream, encoder);
  encoder->block[encoder->block_len++] = static_cast<uint8_t>(byte);
}
