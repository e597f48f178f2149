#include "codec/lzw_decoder.h"

#include <algorithm>
#include <cstring>

#include "codec/tolerance.h"

// The codes as after a clear code.
static void RestartCodes(GifDecoder* decoder) {
  decoder->code_count = decoder->end_code + 1;
  decoder->code_width = decoder->code_size + 1;
  decoder->width_limit = 1 << decoder->code_width;
  decoder->last_code = kNoCode;
  decoder->pushed_code = kNoCode;
  std::fill_n(decoder->prefix, kTableSize, uint16_t{kNoCode});
}

void SetUpGifDecoder(GifDecoder* decoder, int32_t code_size) {
  decoder->code_size = code_size;
  decoder->clear_code = 1 << code_size;
  decoder->end_code = decoder->clear_code + 1;
  decoder->stack_depth = 0;
  RestartCodes(decoder);
}

void DefineEntry(GifDecoder* decoder, int32_t entry, int32_t code, uint8_t pixel) {
  const bool goes_on = code > decoder->clear_code && decoder->suffix_length[code] < kSuffix;
  decoder->suffix[entry] = pixel | (goes_on ? decoder->suffix[code] << 8 : 0);
  decoder->suffix_length[entry] = static_cast<uint8_t>(goes_on ? decoder->suffix_length[code] + 1 : 1);
  decoder->prefix[entry] = static_cast<uint16_t>(goes_on ? decoder->prefix[code] : code);
}

static int32_t ReadCode(MyFILE* stream, GifDecoder* decoder) {
  decoder->input->Fill(stream, decoder->code_width);
  const int32_t code = decoder->input->Take(decoder->code_width);

  const bool widens = decoder->code_count >= decoder->width_limit && decoder->code_width < kMaxCodeWidth;
  decoder->code_count++;
  if (widens) {
    decoder->width_limit *= 2;
    decoder->code_width++;
  }
  return code;
}

// The first pixel of a code's string. Without a code there is no string to follow: the value itself then
// counts.
static uint8_t FirstPixel(const GifDecoder* decoder, int32_t code) {
  while (code > decoder->clear_code && code < kTableSize) code = decoder->prefix[code];
  return static_cast<uint8_t>(code);
}

// Puts the string of a table code on the empty stack. Gives its length, or 0 when there is no such string;
// what was pushed until then stays. Entries link to entries made before them, so no string outgrows the
// stack. Damaged data may name one long string row after row: it is not put together again.
static int32_t PushString(GifDecoder* decoder, int32_t code, int32_t last_code) {
  if (code == decoder->pushed_code) return decoder->pushed_depth;
  const int32_t pushed = code;
  decoder->pushed_code = kNoCode;
  uint8_t* top = decoder->stack;
  if (decoder->prefix[code] == kNoCode) {
    if (code != decoder->code_count - 2) return 0;
    // The entry that this very code defines: the previous string and its own first pixel.
    *top++ = FirstPixel(decoder, last_code);
    code = last_code;
  }
  while (code > decoder->clear_code && code < kTableSize) {
    // What lies above the string may be wanted once more: nothing is stored there. (All pieces but the first are
    // full.)
    const uint64_t pixels = decoder->suffix[code];
    const int32_t count = decoder->suffix_length[code];
    if (count == kSuffix) {
      std::memcpy(top, &pixels, sizeof pixels);
    } else {
      std::memcpy(top, &pixels, static_cast<size_t>(count));
    }
    top += count;
    code = decoder->prefix[code];
  }
  if (code == kNoCode) return 0;
  *top++ = static_cast<uint8_t>(code);
  decoder->pushed_code = pushed;
  decoder->pushed_depth = static_cast<int32_t>(top - decoder->stack);
  return decoder->pushed_depth;
}

// Compilers know this for one instruction.
static uint64_t Reversed(uint64_t bytes) {
  bytes = (bytes & 0x00FF00FF00FF00FF) << 8 | (bytes >> 8 & 0x00FF00FF00FF00FF);
  bytes = (bytes & 0x0000FFFF0000FFFF) << 16 | (bytes >> 16 & 0x0000FFFF0000FFFF);
  return bytes << 32 | bytes >> 32;
}

// Copies bytes in reverse, several at a time: damaged data may bring a long string back into every row.
static void CopyReversed(const uint8_t* from, int32_t count, uint8_t* to) {
  const uint8_t* end = from + count;
  for (; count >= 8; count -= 8, to += 8) {
    uint64_t bytes = 0;
    std::memcpy(&bytes, end -= 8, sizeof bytes);
    bytes = Reversed(bytes);
    std::memcpy(to, &bytes, sizeof bytes);
  }
  std::reverse_copy(from, from + count, to);
}

// Moves pixels from the stack to the rest of a row. Gives how many; the stack keeps what does not fit.
static int32_t Pop(const GifDecoder* decoder, int32_t* depth, uint8_t* line, int32_t room) {
  const int32_t count = std::min(*depth, room);
  *depth -= count;
  CopyReversed(decoder->stack + *depth, count, line);
  return count;
}

int32_t ContinueGifLine(MyFILE* stream, GifDecoder* decoder, uint8_t* line, int32_t length, int32_t done,
                        int32_t last_code) {
  int32_t depth = 0;
  while (done < length) {
    const int32_t code = ReadCode(stream, decoder);
    if (code == decoder->end_code) {
      if (done == length - 1) break;  // some encoders leave out an image's last pixel
      return done;
    }
    if (code == decoder->clear_code) {
      RestartCodes(decoder);
      last_code = kNoCode;
      continue;
    }
    auto first = static_cast<uint8_t>(code);
    if (code < decoder->clear_code) {
      line[done++] = first;
    } else {
      depth = PushString(decoder, code, last_code);
      if (depth == 0) return done;
      first = decoder->stack[depth - 1];
      done += Pop(decoder, &depth, line + done, length - done);
    }
    if (last_code != kNoCode) {
      const int32_t defined = decoder->code_count - 2;
      if (defined < kTableSize) {
        DefineEntry(decoder, defined, last_code, first);
      } else if (kTolerant) {
        decoder->code_count = kTableSize + 2;  // no need to count further
      } else {
        return done;
      }
    }
    last_code = code;
  }
  decoder->last_code = last_code;
  decoder->stack_depth = depth;
  return done;
}

int32_t ReadGifLine(MyFILE* stream, GifDecoder* decoder, uint8_t* line, int32_t length) {
  if (!line) return 0;
  int32_t depth = decoder->stack_depth;
  const int32_t done = Pop(decoder, &depth, line, length);
  if (done < length) return ContinueGifLine(stream, decoder, line, length, done, decoder->last_code);
  decoder->stack_depth = depth;
  return done;
}

bool OnlyZerosFollow(const GifDecoder* decoder) {
  return decoder->input->OnlyZerosFollow() && decoder->stack_depth == 0;
}

bool RepeatsForGood(const GifDecoder* decoder, int32_t length) {
  const bool table_full = decoder->code_count - 1 >= kTableSize;  // for the next code
  return !kTolerant && table_full && decoder->last_code != kNoCode && decoder->stack_depth < length &&
         decoder->input->OnlyZerosFollow();
}
