#pragma once

// The encoder's way for any picture: a hash table, and for strings of two pixels a table by those pixels.
//
// In photographs most strings end at their second pixel or third. What stands in a table by two pixels needs no hash,
// meets no other string, and the hash table is half as full: 15 % faster on photographs. That table is worth clearing
// only when there are a few thousand pixels; smaller images have all strings in a small hash table.

#include <cstdint>

#include "codec/lzw_hash.h"
#include "codec/lzw_strings.h"

// Valid as a whole from `UsePairs` on.
struct PairStrings {
  uint32_t generation;      // times 4096; entries of others are empty: that saves clearing 14 times of 15
  uint16_t codes[1 << 16];  // by two pixels, the first lowest
};

// Pixels that the code size cannot hold are strings of the code that they look like.
void UsePairs(PairStrings& pairs, StringTable& table, const LzwStrings& strings);
const uint8_t* CodePairs(PairStrings& pairs, StringTable& table, LzwStrings& strings, const uint8_t* at,
                         const uint8_t* end);

// Empties both for the strings after a clear code.
void ClearPairs(PairStrings& pairs, StringTable& table);

// The same with the hash table alone.
void UseTable(StringTable& table, const LzwStrings& strings);
const uint8_t* CodeWithTable(StringTable& table, LzwStrings& strings, const uint8_t* at, const uint8_t* end);
