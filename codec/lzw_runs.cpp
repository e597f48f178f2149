#include "codec/lzw_runs.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <iterator>

#include "codec/lzw_strings.h"

namespace {

// The first pixel that is not of that colour, or `end`. Most runs are short: they are measured without a branch that
// depends on how long they are.
const uint8_t* EndOfRun(const uint8_t* at, const uint8_t* end, uint32_t colour) {
  const uint64_t eight = colour * 0x0101010101010101U;
  const auto differences = [&](const uint8_t* pixels) {
    uint64_t word;
    std::memcpy(&word, pixels, sizeof word);
    return word ^ eight;
  };
  while (end - at >= 8) {
    if (const uint64_t found = differences(at); found != 0) return at + std::countr_zero(found) / 8;
    for (at += 8; end - at >= 64; at += 64) {
      uint64_t any = 0;
      for (int i = 0; i < 64; i += 8) any |= differences(at + i);
      if (any != 0) break;
    }
  }
  while (at < end && *at == colour) ++at;
  return at;
}

int32_t LongestRun(const RunStrings& runs, uint32_t head) { return runs.codes[runs.first[head]]; }

// The code of the head when its run is `length` pixels long, 1 to the head's longest.
uint32_t RunCode(const RunStrings& runs, uint32_t head, int32_t length) {
  return length == 1 ? head : runs.codes[runs.first[head] + length];
}

// The code of a string that is about to be stored; nothing follows it yet.
uint32_t NewString(RunStrings& runs, const CodeWriter& codes) {
  const uint32_t code = codes.next_code();
  runs.first[code] = 0;
  runs.other_code[code] = 0;
  return code;
}

// Gives a code to the head with the next longer run. The head moves to a place of twice the size when it has filled
// its own; all places together stay below four times the number of codes.
void AddRun(RunStrings& runs, uint32_t head, uint32_t code) {
  const uint16_t* const old = runs.codes + runs.first[head];
  const uint16_t longest = old[0], room = old[1];
  uint16_t* place = runs.codes + runs.first[head];
  if (longest > room) {
    runs.first[head] = static_cast<uint16_t>(runs.codes_used);
    place = runs.codes + runs.codes_used;
    place[1] = static_cast<uint16_t>(2 * room + 2);
    std::copy_n(old + 2, longest - 1, place + 2);
    runs.codes_used += 2 + place[1];
  }
  place[0] = static_cast<uint16_t>(longest + 1);
  place[longest + 1] = static_cast<uint16_t>(code);
}

// Takes the pixels that go on with the last one, and codes as many strings as they fill. False when all strings must
// be cleared.
bool CodeRun(RunStrings& runs, CodeWriter& codes, const uint8_t*& at, const uint8_t* end) {
  const auto colour = static_cast<uint32_t>(runs.last_pixel);
  int64_t coming = EndOfRun(at, end, colour) - at;
  at += coming;
  for (int32_t longest = 0; runs.length + coming > (longest = LongestRun(runs, runs.head));) {
    coming -= longest + 1 - runs.length;
    codes.Put(RunCode(runs, runs.head, longest));
    AddRun(runs, runs.head, NewString(runs, codes));
    runs.head = colour;
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

// Moves what a head becomes in runs into the hash table.
void StoreRuns(GifEncoder* encoder, uint32_t head, uint32_t pixel) {
  const RunStrings& runs = encoder->runs;
  for (int32_t length = 2; length <= LongestRun(runs, head); ++length) {
    StoreInTable(encoder, RunCode(runs, head, length - 1), pixel, RunCode(runs, head, length));
  }
}

}  // namespace

void UseRuns(GifEncoder* encoder) {
  RunStrings& runs = encoder->runs;
  runs.in_use = 1;
  runs.last_pixel = encoder->prefix_code;
  runs.head = static_cast<uint32_t>(encoder->prefix_code);
  runs.length = 1;
  runs.codes[0] = 1;
  runs.codes[1] = 0;
  runs.codes_used = 2;
  std::fill_n(runs.first, encoder->next_code, uint16_t{0});
  std::fill_n(runs.other_code, encoder->next_code, uint16_t{0});
}

void LeaveRuns(GifEncoder* encoder) {
  RunStrings& runs = encoder->runs;
  runs.in_use = 0;
  // What this adds to the table may be met again, and changes nothing.
  for (const uint32_t entry : encoder->hash_table) {
    if (entry != kEmptyEntry) StoreRuns(encoder, entry & kCodeMask, entry >> kCodeBits & 0xFF);
  }
  for (uint32_t code = 0; code < static_cast<uint32_t>(encoder->next_code); ++code) {
    if (code < 256 && code < static_cast<uint32_t>(encoder->clear_code)) StoreRuns(encoder, code, code);
    if (const uint32_t other = runs.other_code[code]; other != 0) {
      StoreInTable(encoder, code, runs.other_pixel[code], other);
      StoreRuns(encoder, other, runs.other_pixel[code]);
    }
  }
}

const uint8_t* CodeRuns(GifEncoder* encoder, const uint8_t* at, const uint8_t* end) {
  CodeWriter codes(encoder);
  RunStrings& runs = encoder->runs;
  uint32_t* const table = encoder->hash_table;
  while (at < end) {
    if (*at == runs.last_pixel) {
      if (!CodeRun(runs, codes, at, end)) break;
      continue;
    }
    const uint32_t pixel = *at++;
    const uint32_t prefix = RunCode(runs, runs.head, runs.length);
    runs.length = 1;
    runs.last_pixel = static_cast<int32_t>(pixel);
    const uint32_t other = runs.other_code[prefix];
    const uint32_t key = Key(prefix, pixel);
    uint32_t slot = 0;
    if (other != 0) {
      if (runs.other_pixel[prefix] == pixel) {
        runs.head = other;
        continue;
      }
      if (FindString(table, key, slot)) {
        runs.head = table[slot] & kCodeMask;
        continue;
      }
    }
    codes.Put(prefix);
    const uint32_t code = NewString(runs, codes);
    if (other == 0) {
      runs.other_code[prefix] = static_cast<uint16_t>(code);
      runs.other_pixel[prefix] = static_cast<uint8_t>(pixel);
    } else {
      table[slot] = key << kCodeBits | code;
    }
    runs.head = pixel;
    if (!codes.Advance()) break;
  }
  encoder->prefix_code = static_cast<int32_t>(RunCode(runs, runs.head, runs.length));
  return at;
}
