#include "codec/lzw_runs.h"

#include <algorithm>
#include <bit>
#include <cstring>

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

// Nothing follows a new string yet.
template <uint32_t kRow>
void AddString(RunStrings& runs, uint32_t code) {
  runs.first[code] = 0;
  if constexpr (kRow == 0) {
    runs.first_other.code[code] = 0;
  } else {
    std::memset(runs.rows + code * kRow, 0, kRow * sizeof runs.rows[0]);
  }
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

// Takes the pixels that go on with the last one, and codes as many strings as they fill. False when that led to the
// pause.
template <uint32_t kRow>
[[gnu::always_inline]] inline bool CodeRun(RunStrings& runs, RunInHand& hand, LzwStrings& strings, int32_t& next,
                                           const uint8_t*& at, const uint8_t* end) {
  const uint32_t colour = hand.last_pixel;
  int64_t coming = EndOfRun(at, end, colour) - at;
  at += coming;
  for (int32_t longest = 0; hand.length + coming > (longest = LongestRun(runs, hand.head));) {
    coming -= longest + 1 - hand.length;
    strings.keys[next] = Key(RunCode(runs, hand.head, longest), colour);
    AddString<kRow>(runs, static_cast<uint32_t>(next));
    AddRun(runs, hand.head, static_cast<uint32_t>(next));
    hand.head = colour;
    hand.length = 1;
    if (++next < strings.pause_code) continue;
    at -= coming;
    return false;
  }
  hand.length += static_cast<int32_t>(coming);
  return true;
}

// Whether there is a string of that key, whose pixel is not its prefix's last. Otherwise it gets `code`.
template <uint32_t kRow>
[[gnu::always_inline]] inline bool FindOther(RunStrings& runs, StringTable& table, uint32_t key, uint32_t code,
                                             uint32_t& found) {
  const uint32_t prefix = KeyPrefix(key), pixel = KeyPixel(key);
  if constexpr (kRow != 0) {
    uint16_t& place = runs.rows[prefix * kRow + pixel];
    found = place;
    if (found != 0) return true;
    place = static_cast<uint16_t>(code);
    return false;
  }
  found = runs.first_other.code[prefix];
  if (found == 0) {
    runs.first_other.code[prefix] = static_cast<uint16_t>(code);
    runs.first_other.pixel[prefix] = static_cast<uint8_t>(pixel);
    return false;
  }
  if (runs.first_other.pixel[prefix] == pixel) return true;
  uint32_t slot;
  found = FindString(table, key, slot);
  if (found < kTableSize) return true;
  table.entries[slot] = Entry(key, code);
  return false;
}

template <uint32_t kRow>
void TakeOver(RunStrings& runs, StringTable& table, const LzwStrings& strings) {
  uint16_t heads[kTableSize], lengths[kTableSize];  // what each string is in terms of runs
  ClearTable(table);
  runs.codes[0] = 1;
  runs.codes[1] = 0;
  runs.codes_used = 2;
  for (int32_t next = 0; next < strings.next_code; ++next) {
    const auto code = static_cast<uint32_t>(next);
    AddString<kRow>(runs, code);
    heads[code] = static_cast<uint16_t>(code);
    lengths[code] = 1;
    if (next <= strings.end_code) continue;
    const uint32_t key = strings.keys[code], prefix = KeyPrefix(key);
    uint32_t none;
    if (KeyPixel(key) == LastPixel(strings, prefix)) {
      heads[code] = heads[prefix];
      lengths[code] = static_cast<uint16_t>(lengths[prefix] + 1);
      AddRun(runs, heads[code], code);
    } else {
      FindOther<kRow>(runs, table, key, code, none);
    }
  }
  const auto prefix = static_cast<uint32_t>(strings.prefix_code);
  runs.hand = {heads[prefix], lengths[prefix], LastPixel(strings, prefix)};
}

// The string in hand and the next code are in locals: in memory, every step would wait for the one before to be
// stored (3 to 10 % on interfaces).
template <uint32_t kRow>
const uint8_t* Code(RunStrings& runs, StringTable& table, LzwStrings& strings, const uint8_t* at,
                    const uint8_t* end) {
  RunInHand hand = runs.hand;
  int32_t next = strings.next_code;
  while (at < end && next < strings.pause_code) {
    if (*at == hand.last_pixel) {
      if (!CodeRun<kRow>(runs, hand, strings, next, at, end)) break;
      continue;
    }
    const uint32_t pixel = *at++, key = Key(RunCode(runs, hand.head, hand.length), pixel);
    const auto code = static_cast<uint32_t>(next);
    hand.length = 1;
    hand.last_pixel = pixel;
    if (FindOther<kRow>(runs, table, key, code, hand.head)) continue;
    strings.keys[next++] = key;
    AddString<kRow>(runs, code);
    hand.head = pixel;
  }
  runs.hand = hand;
  strings.next_code = next;
  strings.prefix_code = static_cast<int32_t>(RunCode(runs, hand.head, hand.length));
  return at;
}

}  // namespace

void UseRuns(RunStrings& runs, StringTable& table, const LzwStrings& strings, bool with_rows) {
  runs.row = !with_rows || strings.clear_code > 16 ? 0 : strings.clear_code <= 4 ? 4 : 16;
  (runs.row == 0 ? TakeOver<0> : runs.row == 4 ? TakeOver<4> : TakeOver<16>)(runs, table, strings);
}

const uint8_t* CodeRuns(RunStrings& runs, StringTable& table, LzwStrings& strings, const uint8_t* at,
                        const uint8_t* end) {
  return (runs.row == 0 ? Code<0> : runs.row == 4 ? Code<4> : Code<16>)(runs, table, strings, at, end);
}
