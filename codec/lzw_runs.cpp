#include "codec/lzw_runs.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <iterator>

#include "codec/lzw_strings.h"

namespace {

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

// The code of `colour` as many times as `length` says, 1 to the colour's longest.
uint32_t RunCode(const RunStrings& runs, uint32_t colour, int32_t length) {
  return length == 1 ? colour : runs.codes[runs.colours[colour].first + length - 2];
}

// Gives a code to the next longer string of one colour. A colour's codes move to a place of twice the size when they
// have filled theirs; the places of all colours together stay below four times the number of codes.
void AddRun(RunStrings& runs, uint32_t colour, uint32_t code) {
  ColourRuns& own = runs.colours[colour];
  const int32_t count = own.longest - 1;
  if (count == own.room) {
    std::copy_n(runs.codes + own.first, count, runs.codes + runs.codes_used);
    own.first = static_cast<uint16_t>(runs.codes_used);
    own.room = static_cast<uint16_t>(count == 0 ? 4 : count * 2);
    runs.codes_used += own.room;
  }
  runs.codes[own.first + count] = static_cast<uint16_t>(code);
  ++own.longest;
}

// With a string of one colour in hand: takes the pixels that go on with it, and codes as many strings as they fill.
// False when all strings must be cleared.
bool CodeRun(RunStrings& runs, CodeWriter& codes, const uint8_t*& at, const uint8_t* end) {
  const auto colour = static_cast<uint32_t>(runs.last_pixel);
  const ColourRuns& own = runs.colours[colour];
  int64_t coming = EndOfRun(at, end, colour) - at;
  at += coming;
  while (runs.length + coming > own.longest) {
    coming -= own.longest + 1 - runs.length;
    codes.Put(RunCode(runs, colour, own.longest));
    AddRun(runs, colour, codes.next_code());
    runs.length = 1;
    if (codes.Advance()) continue;
    at -= coming;
    return false;
  }
  runs.length += static_cast<int32_t>(coming);
  return true;
}

void StoreInTable(GifEncoder* encoder, uint32_t prefix, uint32_t pixel, uint32_t code) {
  const uint32_t key = Key(prefix, pixel);
  uint32_t slot;
  FindString(encoder->hash_table, key, slot);
  encoder->hash_table[slot] = key << kCodeBits | code;
}

}  // namespace

void UseRuns(GifEncoder* encoder) {
  RunStrings& runs = encoder->runs;
  runs.in_use = 1;
  runs.last_pixel = encoder->prefix_code;
  runs.length = 1;
  runs.codes_used = 0;
  std::fill(std::begin(runs.colours), std::end(runs.colours), ColourRuns{1, 0, 0});
}

void LeaveRuns(GifEncoder* encoder) {
  RunStrings& runs = encoder->runs;
  runs.in_use = 0;
  // Lists begin at strings that are in the table; what this adds to the table may be met again and changes nothing.
  for (const uint32_t entry : encoder->hash_table) {
    if (entry == kEmptyEntry) continue;
    const uint32_t pixel = entry >> kCodeBits & 0xFF;
    for (uint32_t code = entry & kCodeMask; runs.again[code] != 0; code = runs.again[code]) {
      StoreInTable(encoder, code, pixel, runs.again[code]);
    }
  }
  for (uint32_t colour = 0; colour < std::size(runs.colours); ++colour) {
    for (int32_t length = 2; length <= runs.colours[colour].longest; ++length) {
      StoreInTable(encoder, RunCode(runs, colour, length - 1), colour, RunCode(runs, colour, length));
    }
  }
}

const uint8_t* CodeRuns(GifEncoder* encoder, const uint8_t* at, const uint8_t* end) {
  CodeWriter codes(encoder);
  RunStrings& runs = encoder->runs;
  uint32_t* const table = encoder->hash_table;
  auto prefix = static_cast<uint32_t>(encoder->prefix_code);
  for (bool room = true; at < end && room;) {
    const uint32_t pixel = *at;
    const bool again = static_cast<int32_t>(pixel) == runs.last_pixel;
    if (again && runs.length > 0) {
      room = CodeRun(runs, codes, at, end);
      prefix = RunCode(runs, pixel, runs.length);
      continue;
    }
    ++at;
    const uint32_t key = Key(prefix, pixel);
    uint32_t slot = 0;
    uint32_t found = 0;
    if (again) {
      found = runs.again[prefix];
    } else if (FindString(table, key, slot)) {
      found = table[slot] & kCodeMask;
    }
    runs.last_pixel = static_cast<int32_t>(pixel);
    if (found != 0) {
      prefix = found;
      runs.length = 0;
      continue;
    }
    codes.Put(prefix);
    const uint32_t code = codes.next_code();
    if (again) {
      runs.again[prefix] = static_cast<uint16_t>(code);
    } else {
      table[slot] = key << kCodeBits | code;
    }
    runs.again[code] = 0;
    prefix = pixel;
    runs.length = 1;
    room = codes.Advance();
  }
  encoder->prefix_code = static_cast<int32_t>(prefix);
  return at;
}
