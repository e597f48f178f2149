#pragma once

// A hash table of strings: open addressing, one step at a time.

#include <cstdint>
#include <cstring>

#include "codec/lzw_strings.h"

// An entry is a string's key and its code.
struct StringTable {
  static constexpr uint32_t kMostEntries = 16384;  // four times as many as strings: probing seldom goes on
  static constexpr uint32_t kFewEntries = 4096;    // for the first strings of an image: quick to clear
  static constexpr uint32_t kEmpty = 0xFFFFFFFF;   // no key is that high: prefixes stay below 4095

  uint32_t mask;  // the number of entries in use, less one
  uint32_t entries[kMostEntries];
};

inline void ClearTable(StringTable& table) {
  std::memset(table.entries, 0xFF, (table.mask + 1) * sizeof table.entries[0]);
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
