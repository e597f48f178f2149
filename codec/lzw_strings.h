#pragma once

// The strings of an image that have got codes since the last clear code. Where they are looked up is up to each way
// of finding them: lzw_tables.h, lzw_runs.h.

#include <cstdint>
#include <cstring>

#include "codec/format.h"

constexpr int32_t kLastCode = kTableSize - 1;  // never lasts: all strings are cleared when one gets it
constexpr int32_t kNoPrefix = 4097;            // in place of a prefix: no pixel has been taken yet

// A string is the string of a shorter code and one pixel more; its key is both, in 20 bits.
inline uint32_t Key(uint32_t prefix, uint32_t pixel) { return prefix << 8 | pixel; }
inline uint32_t KeyPrefix(uint32_t key) { return key >> 8; }
inline uint32_t KeyPixel(uint32_t key) { return key & 0xFF; }

// A string is added whenever its prefix's code is written, so the keys are the written codes, too.
struct LzwStrings {
  int32_t clear_code;         // codes below are single pixels
  int32_t end_code;           // the code after it
  int32_t next_code;          // what the next new string gets
  int32_t pause_code;         // coding stops when `next_code` gets there
  int32_t prefix_code;        // the string matched so far, or `kNoPrefix`
  uint32_t keys[kTableSize];  // by code, from `end_code` + 1 to `next_code` - 1
};

// The last pixel of a string.
inline uint32_t LastPixel(const LzwStrings& strings, uint32_t code) {
  return code < static_cast<uint32_t>(strings.clear_code) ? code : KeyPixel(strings.keys[code]);
}

// Every way consists of a record and these:
//
//   Use...   takes over all strings there are, and the one in hand.
//   Code...  codes pixels until `end` or until the next code is `pause_code`; the result is where it stopped.

// --- A hash table of strings: open addressing, one step at a time ------------------------------------------

// An entry is a string's key and its code.
struct StringTable {
  static constexpr uint32_t kMostEntries = 16384;  // four times as many as strings: probing seldom goes on
  static constexpr uint32_t kFewEntries = 4096;    // for the first strings of an image: quick to clear
  static constexpr uint32_t kFewest = 2048;        // for those of a small one
  static constexpr uint32_t kEmpty = 0xFFFFFFFF;   // no key is that high: prefixes stay below 4095

  uint32_t mask;  // the number of entries in use, less one
  uint32_t* entries;
};

inline void ClearTable(StringTable& table) {
  std::memset(table.entries, 0xFF, (size_t{table.mask} + 1) * sizeof table.entries[0]);
}

inline uint32_t Entry(uint32_t key, uint32_t code) { return key << kMaxCodeWidth | code; }

// The code of the key's string, or else `kTableSize` or more, with the slot where its entry belongs. The hash meets
// as few other strings as a multiplication of the whole key would, and takes two cycles less.
inline uint32_t FindString(const StringTable& table, uint32_t key, uint32_t& slot) {
  for (slot = KeyPrefix(key) * 5 + KeyPixel(key) * 0x9E37;; ++slot) {
    slot &= table.mask;
    const uint32_t code = table.entries[slot] ^ Entry(key, 0);
    if (code < kTableSize || table.entries[slot] == StringTable::kEmpty) return code;
  }
}

inline void AddToTable(StringTable& table, uint32_t key, uint32_t code) {
  uint32_t slot;
  FindString(table, key, slot);
  table.entries[slot] = Entry(key, code);
}
