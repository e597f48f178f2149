#include "tests/oracle/slow_decoder.h"

namespace oracle {

// Of a build that reads on when the table is full and no clear code comes; else the row ends.
#if defined(GIF_TOLERANT)
static constexpr bool kGoesOnWhenFull = true;
#else
static constexpr bool kGoesOnWhenFull = false;
#endif

void SetUp(GifDecoder* decoder, int32_t code_size) {
  const auto events = decoder->events;
  *decoder = GifDecoder{};
  decoder->events = events;
  decoder->code_size = code_size;
  decoder->clear_code = 1 << code_size;
  decoder->end_code = decoder->clear_code + 1;
  decoder->code_count = decoder->clear_code + 2;
  decoder->code_width = code_size + 1;
  decoder->width_limit = 1 << (code_size + 1);
  decoder->last_code = 4098;
  decoder->prefix.fill(4098);
}

static uint64_t FetchByte(MyFILE* stream, GifDecoder* d) {
  if (d->data_ended) return 0;
  if (d->block_pos == d->block_len) {
    d->block_len = MyGetc(stream);
    d->block_pos = 0;
    for (int32_t i = 0; i < d->block_len; ++i) d->block[i] = static_cast<uint8_t>(MyGetc(stream));
    if (d->block_len == 0) {
      d->data_ended = 1;
      return 0;
    }
  }
  return d->block[d->block_pos++];
}

static int32_t ReadCode(MyFILE* stream, GifDecoder* d) {
  if (d->data_ended && d->bit_buffer == 0) d->events[kDataEnded]++;
  while (d->bit_count < d->code_width) {
    d->bit_buffer |= FetchByte(stream, d) << d->bit_count;
    d->bit_count += 8;
  }
  const auto code = static_cast<int32_t>(d->bit_buffer & ((1U << d->code_width) - 1));
  d->bit_buffer >>= d->code_width;
  d->bit_count -= d->code_width;
  const int32_t old = d->code_count;
  d->code_count = old + 1;
  if (old >= d->width_limit && d->code_width < 12) {
    d->width_limit *= 2;
    d->code_width++;
  }
  return code;
}

static uint8_t FirstPixel(const GifDecoder* d, int32_t t) {
  for (int step = 0; step < 4096 && t > d->clear_code && t != 4098; ++step) t = d->prefix.at(t);
  return static_cast<uint8_t>(t);
}

void ReadGifLine(MyFILE* stream, GifDecoder* d, unsigned char* line, int len) {
  if (!line) return;
  int i = 0;
  int32_t depth = d->stack_depth;
  int32_t last_code = d->last_code;
  bool cleared = false;
  const auto fail = [&](Event event) {
    d->events[event]++;
    if (cleared) d->events[kErrorAfterClear]++;
    if (d->stack_depth > 0) d->events[kErrorAfterDrain]++;
  };

  while (depth > 0 && i < len) line[i++] = d->stack.at(--depth);
  if (i == len) {
    if (depth > 0) d->events[kSeveralRows]++;
    d->stack_depth = depth;
    return;
  }

  while (i < len) {
    const int32_t q = ReadCode(stream, d);
    if (q == d->end_code) {
      if (i != len - 1) return fail(kEndEarly);
      d->events[kEndOneShort]++;
      d->last_code = last_code;
      d->stack_depth = depth;
      return;
    }
    if (q == d->clear_code) {
      d->prefix.fill(4098);
      d->code_count = d->end_code + 1;
      d->code_width = d->code_size + 1;
      d->width_limit = 1 << d->code_width;
      last_code = 4098;
      d->last_code = 4098;
      cleared = true;
      continue;
    }
    if (q < d->clear_code) {
      line[i++] = static_cast<uint8_t>(q);
    } else {
      int32_t t = q;
      if (d->prefix.at(q) == 4098) {
        if (q != d->code_count - 2) return fail(kUndefinedCode);
        d->events[kOwnEntry]++;
        const uint8_t f = FirstPixel(d, last_code);
        d->stack.at(depth++) = f;
        d->suffix.at(d->code_count - 2) = f;
        t = last_code;
      }
      int pushed = 0;
      while (t > d->clear_code && t <= 4095) {
        d->stack.at(depth++) = d->suffix.at(t);
        t = d->prefix.at(t);
        pushed++;
      }
      if (t > 4095 || pushed > 4093) return fail(kUndefinedLink);
      d->stack.at(depth++) = static_cast<uint8_t>(t);
      while (depth > 0 && i < len) line[i++] = d->stack.at(--depth);
      if (depth > 0) d->events[kStraddle]++;
    }
    if (last_code != 4098) {
      const int32_t k = d->code_count - 2;
      if (k > 4095 && !kGoesOnWhenFull) return fail(kTableFull);
      d->events[kTableFull] += k > 4095;
      if (k <= 4095) {
        d->prefix.at(k) = last_code;
        d->suffix.at(k) = q == k ? FirstPixel(d, last_code) : FirstPixel(d, q);
      }
    }
    last_code = q;
  }
  d->last_code = last_code;
  d->stack_depth = depth;
}

void SkipRest(MyFILE* stream, GifDecoder* decoder) {
  while (!decoder->data_ended) {
    const int32_t length = MyGetc(stream);
    for (int32_t i = 0; i < length; ++i) MyGetc(stream);
    decoder->data_ended = length == 0;
  }
}

bool RepeatsForGood(const GifDecoder& before, const GifDecoder& after) {
  constexpr int32_t kNothingToDefine = 4098;  // the count only grows, and no entry depends on it any more
  return before.data_ended && before.block_pos == before.block_len && before.bit_buffer == 0 &&
         before.code_count >= kNothingToDefine && before.code_width == after.code_width &&
         before.last_code == after.last_code && before.stack_depth == after.stack_depth &&
         before.stack == after.stack && before.suffix == after.suffix && before.prefix == after.prefix;
}

std::vector<uint8_t> ReadImage(MyFILE* stream, GifDecoder* decoder, int32_t width, int32_t height) {
  std::vector<uint8_t> pixels(static_cast<size_t>(width) * height);
  for (int32_t y = 0; y < height; ++y) {
    ReadGifLine(stream, decoder, pixels.data() + static_cast<size_t>(y) * width, width);
  }
  SkipRest(stream, decoder);
  return pixels;
}

}  // namespace oracle
