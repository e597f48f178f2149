#include "codec/lzw_tables.h"

#include <algorithm>
#include <cstring>

// --- Pairs and a hash table --------------------------------------------------------------------------------

namespace {

constexpr uint32_t kGeneration = kTableSize, kLastGeneration = 15 * kGeneration;

uint32_t PairIndex(uint32_t first, uint32_t second) { return first | second << 8; }

// The strings of more than two pixels; a string of two when `prefix` is a pixel that does not fit.
bool IsLonger(uint32_t prefix, uint32_t clear_code) { return prefix >= clear_code; }

// Adds the string that the pixel makes of the prefix.
uint32_t NewString(LzwStrings& strings, int32_t& next, uint32_t key) {
  strings.keys[next] = key;
  return static_cast<uint32_t>(next++);
}

// Goes on with a string that is in the hash table if it is anywhere. True when it has ended: a string was added.
bool CodeLonger(StringTable& table, LzwStrings& strings, int32_t& next, uint32_t& prefix, const uint8_t*& at,
                const uint8_t* end) {
  while (at < end) {
    const uint32_t pixel = *at++, key = Key(prefix, pixel);
    uint32_t slot;
    prefix = FindString(table, key, slot);
    if (prefix < kTableSize) continue;
    table.entries[slot] = Entry(key, NewString(strings, next, key));
    prefix = pixel;
    return true;
  }
  return false;
}

}  // namespace

void ClearPairs(PairStrings& pairs, StringTable& table) {
  ClearTable(table);
  pairs.generation += kGeneration;
  if (pairs.generation <= kLastGeneration) return;
  pairs.generation = kGeneration;
  std::memset(pairs.codes, 0, sizeof pairs.codes);
}

void UsePairs(PairStrings& pairs, StringTable& table, const LzwStrings& strings) {
  pairs.generation = kLastGeneration;
  ClearPairs(pairs, table);
  for (int32_t code = strings.end_code + 1; code < strings.next_code; ++code) {
    const uint32_t key = strings.keys[code], prefix = KeyPrefix(key);
    if (IsLonger(prefix, static_cast<uint32_t>(strings.clear_code))) {
      AddToTable(table, key, static_cast<uint32_t>(code));
    } else {
      pairs.codes[PairIndex(prefix, KeyPixel(key))] =
          static_cast<uint16_t>(pairs.generation | static_cast<uint32_t>(code));
    }
  }
}

const uint8_t* CodePairs(PairStrings& pairs, StringTable& table, LzwStrings& strings, const uint8_t* at,
                         const uint8_t* end) {
  const uint32_t generation = pairs.generation, clear_code = static_cast<uint32_t>(strings.clear_code);
  const int32_t pause = strings.pause_code;
  int32_t next = strings.next_code;
  auto prefix = static_cast<uint32_t>(strings.prefix_code);
  while (at < end && next < pause) {
    if (IsLonger(prefix, clear_code)) {
      CodeLonger(table, strings, next, prefix, at, end);
      continue;
    }
    const uint32_t pixel = *at++;
    uint16_t& pair = pairs.codes[PairIndex(prefix, pixel)];
    const uint32_t code = pair ^ generation;
    if (code < kTableSize) {
      prefix = code;
      CodeLonger(table, strings, next, prefix, at, end);
    } else {
      pair = static_cast<uint16_t>(generation | NewString(strings, next, Key(prefix, pixel)));
      prefix = pixel;
    }
  }
  strings.next_code = next;
  strings.prefix_code = static_cast<int32_t>(prefix);
  return at;
}

void UseTable(StringTable& table, const LzwStrings& strings) {
  ClearTable(table);
  for (int32_t code = strings.end_code + 1; code < strings.next_code; ++code) {
    AddToTable(table, strings.keys[code], static_cast<uint32_t>(code));
  }
}

const uint8_t* CodeWithTable(StringTable& table, LzwStrings& strings, const uint8_t* at, const uint8_t* end) {
  const int32_t pause = strings.pause_code;
  int32_t next = strings.next_code;
  auto prefix = static_cast<uint32_t>(strings.prefix_code);
  while (next < pause && CodeLonger(table, strings, next, prefix, at, end)) {
  }
  strings.next_code = next;
  strings.prefix_code = static_cast<int32_t>(prefix);
  return at;
}

// --- Rows of bits ------------------------------------------------------------------------------------------

namespace {

constexpr uint32_t kRow = 8, kByOne = 0, kByTwo = 2, kInPrefix = 6;
constexpr uint32_t kNobodysRow = 2 * kRow;  // codes below the clear code and above 1 are no strings

void MakeRow(BitStrings& bits, uint32_t code, uint32_t in_prefix) {
  uint16_t* const row = bits.rows + code * kRow;
  std::fill_n(row, kRow, uint16_t{0});
  row[kInPrefix] = static_cast<uint16_t>(in_prefix);
}

void AddString(BitStrings& bits, uint32_t row, uint32_t pixel, uint32_t code) {
  const auto made = static_cast<uint16_t>(code * kRow);
  bits.rows[row + kByOne + pixel] = made;
  bits.rows[bits.rows[row + kInPrefix] + pixel] = made;
  MakeRow(bits, code, row + kByTwo + 2 * pixel);
}

}  // namespace

void UseBits(BitStrings& bits, const LzwStrings& strings) {
  for (uint32_t pixel = 0; pixel < 2; ++pixel) MakeRow(bits, pixel, kNobodysRow);
  for (int32_t code = strings.end_code + 1; code < strings.next_code; ++code) {
    const uint32_t key = strings.keys[code];
    AddString(bits, KeyPrefix(key) * kRow, KeyPixel(key), static_cast<uint32_t>(code));
  }
}

const uint8_t* CodeBits(BitStrings& bits, LzwStrings& strings, const uint8_t* at, const uint8_t* end) {
  const int32_t pause = strings.pause_code;
  int32_t next = strings.next_code;
  uint32_t row = static_cast<uint32_t>(strings.prefix_code) * kRow;
  while (at < end && next < pause) {
    for (; end - at >= 2; at += 2) {
      const uint16_t* const by_two = bits.rows + kByTwo + 2 * at[0] + at[1];
      const uint32_t two = by_two[row];
      if (two == 0) break;
      row = two;
    }
    if (at == end) break;
    uint32_t pixel = *at++;
    if (const uint32_t one = bits.rows[row + kByOne + pixel]; one != 0) {
      row = one;
      if (at == end) break;
      pixel = *at++;  // which leads nowhere: the two have been looked for
    }
    strings.keys[next] = Key(row / kRow, pixel);
    AddString(bits, row, pixel, static_cast<uint32_t>(next++));
    row = pixel * kRow;
  }
  strings.next_code = next;
  strings.prefix_code = static_cast<int32_t>(row / kRow);
  return at;
}
