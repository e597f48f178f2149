#include "codec/lzw_encoder.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <iterator>

// How it is made fast, without a byte of the result being different:
//
// - A string is looked up in `hash_table` by its key, the prefix's code and the last pixel in 20 bits. An entry is
// the
//   key and the string's code together in 32 bits. The table is four times as large as its strings are many, so that
//   probing seldom goes on, and small enough to be cleared by `memset`.
// - Strings of one colour are what flat pictures are made of. Where pixels repeat they are held in `runs` instead:
// how
//   long a run comes is counted many pixels at a time, and one step finds its code, however long. Since every prefix
//   of a string is a string, the lengths that a colour has codes for are those from 1 to `longest`. Pictures without
//   runs would pay for looking; what to use is chosen at each clear code, by how the strings before it did.
// - Codes go into `block` by whole words, without a look at where sub-blocks end; those are cut when `block` is full.

static_assert(std::endian::native == std::endian::little, "codes are stored lowest byte first");

namespace {

constexpr uint32_t kEmptyEntry = 0xFFFFFFFF;  // no key is that high: prefixes stay below 4095
constexpr uint32_t kHashBits = 14;
constexpr uint32_t kHashMask = (1 << kHashBits) - 1;
constexpr int32_t kCodeBits = 12;
constexpr int32_t kLastCode = 4095;  // never lasts: all is cleared when a string gets it
constexpr int32_t kSubBlockLimit = 255;

// Lines are coded in pieces whose codes surely fit into `block`: a pixel adds two bytes at most.
constexpr int64_t kPiece = 2048;
constexpr int32_t kPieceRoom = 2 * kPiece + 16;
static_assert(kSubBlockLimit + kPieceRoom < static_cast<int32_t>(sizeof GifEncoder::block));

// Fewer pixels than this for each code are not worth looking for runs.
constexpr int64_t kPixelsPerCodeInRuns = 4;

uint32_t SlotOf(uint32_t key) { return (key * 0x9E3779B1U) >> (32 - kHashBits); }

// The slot that holds the key's string, or the empty one where it belongs.
uint32_t FindSlot(const uint32_t* table, uint32_t key) {
  uint32_t slot = SlotOf(key);
  while (table[slot] != kEmptyEntry && table[slot] >> kCodeBits != key) slot = (slot + 1) & kHashMask;
  return slot;
}

// The codes on their way into `block`, in local variables while a piece of a line is coded.
class CodeWriter {
 public:
  explicit CodeWriter(GifEncoder* encoder)
      : encoder_(encoder),
        end_(encoder->block + encoder->block_len),
        bits_(encoder->bit_buffer),
        bit_count_(static_cast<uint32_t>(encoder->bit_count)),
        next_code_(encoder->next_code),
        width_(encoder->code_width),
        event_(EventAt(width_)) {}

  ~CodeWriter() {
    encoder_->block_len = static_cast<int32_t>(end_ - encoder_->block);
    encoder_->bit_buffer = bits_;
    encoder_->bit_count = static_cast<int32_t>(bit_count_);
    encoder_->next_code = next_code_;
    encoder_->code_width = width_;
    encoder_->width_limit = 1 << width_;
  }

  // What the string added next gets.
  uint32_t next_code() const { return static_cast<uint32_t>(next_code_); }

  // Merges the code into the bits whole, what exceeds the width included. Stores eight bytes, of which the first few
  // count.
  void Put(uint32_t code) {
    bits_ |= static_cast<uint64_t>(code) << bit_count_;
    bit_count_ += static_cast<uint32_t>(width_);
    std::memcpy(end_, &bits_, sizeof bits_);
    end_ += bit_count_ / 8;
    bits_ >>= bit_count_ & ~7U;
    bit_count_ %= 8;
  }

  // To be called when a string has got `next_code`; false when that was one too many and all must be cleared.
  bool Advance() {
    if (next_code_++ != event_) return true;
    if (next_code_ > kLastCode) return false;
    event_ = EventAt(++width_);
    return true;
  }

 private:
  // The string after which something happens: the last of its width, or the one that is too many.
  static int32_t EventAt(int32_t width) { return std::min(1 << width, kLastCode); }

  GifEncoder* encoder_;
  uint8_t* end_;
  uint64_t bits_;
  uint32_t bit_count_;
  int32_t next_code_;
  int32_t width_;
  int32_t event_;
};

// Codes pixels until `end`, or until all strings must be cleared; the result is where it stopped.
const uint8_t* CodePixels(GifEncoder* encoder, const uint8_t* at, const uint8_t* end) {
  CodeWriter codes(encoder);
  uint32_t* const table = encoder->hash_table;
  auto prefix = static_cast<uint32_t>(encoder->prefix_code);
  while (at < end) {
    const uint32_t pixel = *at++;
    const uint32_t key = prefix << 8 | pixel;
    const uint32_t slot = FindSlot(table, key);
    if (const uint32_t entry = table[slot]; entry != kEmptyEntry) {
      prefix = entry & kLastCode;
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

// --- Runs of one colour

// The first pixel that is not of that colour, or `end`.
const uint8_t* EndOfRun(const uint8_t* at, const uint8_t* end, uint32_t colour) {
  const uint64_t eight = colour * 0x0101010101010101U;
  const auto differences = [&](const uint8_t* pixels) {
    uint64_t word;
    std::memcpy(&word, pixels, sizeof word);
    return word ^ eight;
  };
  for (; end - at >= 64; at += 64) {
    uint64_t any = 0;
    for (int i = 0; i < 64; i += 8) any |= differences(at + i);
    if (any != 0) break;
  }
  for (; end - at >= 8; at += 8) {
    if (const uint64_t found = differences(at); found != 0) return at + std::countr_zero(found) / 8;
  }
  while (at < end && *at == colour) ++at;
  return at;
}

// The code of the string that is `colour` as many times as `length` says, 1 to the colour's `longest`.
uint32_t RunCode(const GifEncoder* encoder, uint32_t colour, int32_t length) {
  return length == 1 ? colour : encoder->run_codes[encoder->runs[colour].first + length - 2];
}

// Gives a code to the next longer string of one colour. Its codes move to a place of twice the size when they have
// filled theirs; the places of all colours together stay below four times the number of codes.
void AddRun(GifEncoder* encoder, uint32_t colour, uint32_t code) {
  ColourRuns& runs = encoder->runs[colour];
  const int32_t count = runs.longest - 1;
  if (count == runs.room) {
    const uint16_t* old = encoder->run_codes + runs.first;
    runs.first = static_cast<uint16_t>(encoder->run_codes_used);
    runs.room = static_cast<uint16_t>(count == 0 ? 4 : count * 2);
    std::copy_n(old, count, encoder->run_codes + runs.first);
    encoder->run_codes_used += runs.room;
  }
  encoder->run_codes[runs.first + count] = static_cast<uint16_t>(code);
  ++runs.longest;
}

// Takes the pixels that go on with the string in hand, of one colour, and codes as many strings as they fill. False
// when all strings must be cleared.
bool CodeRun(GifEncoder* encoder, CodeWriter& codes, const uint8_t*& at, const uint8_t* end) {
  const auto colour = static_cast<uint32_t>(encoder->run_colour);
  const ColourRuns& runs = encoder->runs[colour];
  int64_t coming = EndOfRun(at, end, colour) - at;
  at += coming;
  while (encoder->run_length + coming > runs.longest) {
    coming -= runs.longest + 1 - encoder->run_length;
    codes.Put(RunCode(encoder, colour, runs.longest));
    AddRun(encoder, colour, codes.next_code());
    encoder->run_length = 1;
    if (codes.Advance()) continue;
    at -= coming;
    return false;
  }
  encoder->run_length += static_cast<int32_t>(coming);
  return true;
}

// As `CodePixels`, with strings of one colour in `runs` alone. All pixels must fit the code size: one that does not
// could look like a string's code.
const uint8_t* CodeRuns(GifEncoder* encoder, const uint8_t* at, const uint8_t* end) {
  CodeWriter codes(encoder);
  uint32_t* const table = encoder->hash_table;
  auto prefix = static_cast<uint32_t>(encoder->prefix_code);
  while (at < end) {
    if (encoder->run_length > 0 && *at == encoder->run_colour) {
      const bool room = CodeRun(encoder, codes, at, end);
      prefix = RunCode(encoder, static_cast<uint32_t>(encoder->run_colour), encoder->run_length);
      if (!room) break;
      continue;
    }
    const uint32_t pixel = *at++;
    const uint32_t key = prefix << 8 | pixel;
    const uint32_t slot = FindSlot(table, key);
    if (const uint32_t entry = table[slot]; entry != kEmptyEntry) {
      prefix = entry & kLastCode;
      encoder->run_length = 0;
      continue;
    }
    codes.Put(prefix);
    table[slot] = key << kCodeBits | codes.next_code();
    prefix = pixel;
    encoder->run_colour = static_cast<int32_t>(pixel);
    encoder->run_length = 1;
    if (!codes.Advance()) break;
  }
  encoder->prefix_code = static_cast<int32_t>(prefix);
  return at;
}

void UseRuns(GifEncoder* encoder) {
  encoder->uses_runs = 1;
  encoder->run_colour = encoder->prefix_code;
  encoder->run_length = 1;
  encoder->run_codes_used = 0;
  std::fill(std::begin(encoder->runs), std::end(encoder->runs), ColourRuns{1, 0, 0});
}

// Moves the strings of one colour to where all others are.
void LeaveRuns(GifEncoder* encoder) {
  encoder->uses_runs = 0;
  for (uint32_t colour = 0; colour < std::size(encoder->runs); ++colour) {
    for (int32_t length = 2; length <= encoder->runs[colour].longest; ++length) {
      const uint32_t key = RunCode(encoder, colour, length - 1) << 8 | colour;
      encoder->hash_table[FindSlot(encoder->hash_table, key)] = key << kCodeBits | RunCode(encoder, colour, length);
    }
  }
}

// --- Lines

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
  encoder->uses_runs = 0;
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

// Writes the full sub-blocks and keeps the rest. Section 15.
void WriteFullSubBlocks(MyFILE* stream, GifEncoder* encoder) {
  const uint8_t* at = encoder->block;
  for (; encoder->block_len >= kSubBlockLimit; encoder->block_len -= kSubBlockLimit, at += kSubBlockLimit) {
    MyPutc(stream, kSubBlockLimit);
    WriteBytes(stream, at, kSubBlockLimit);
  }
  std::memmove(encoder->block, at, static_cast<size_t>(encoder->block_len));
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
  WriteFullSubBlocks(stream, encoder);
  if (encoder->block_len > 0) {
    MyPutc(stream, encoder->block_len);
    WriteBytes(stream, encoder->block, encoder->block_len);
  }
  MyPutc(stream, 0);
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
    const uint8_t* const piece_end = at + std::min(end - at, kPiece);
    if (encoder->uses_runs && !AllFit(encoder, at, piece_end)) LeaveRuns(encoder);
    const uint8_t* const stop = (encoder->uses_runs ? CodeRuns : CodePixels)(encoder, at, piece_end);
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
