#pragma once

// The encoder's ways by tables: for any picture, and for pictures of two colours.

#include <cstdint>

#include "codec/lzw_strings.h"

// --- Pairs and a hash table --------------------------------------------------------------------------------

// The encoder's way for any picture: a hash table, and for strings of two pixels a table by those pixels.
//
// In photographs most strings end at their second pixel or third. What stands in a table by two pixels needs no hash,
// meets no other string, and the hash table is half as full: 15 % faster on photographs. That table is worth clearing
// only when there are a few thousand pixels; smaller images have all strings in a small hash table.

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

// --- Rows of bits ------------------------------------------------------------------------------------------

// The encoder's way for pictures of the pixels 0 and 1 without long runs: each string has a row that tells what it
// becomes by the next pixel, and by the next two. Nothing is searched or compared: noise is coded 2.5 times and a
// checker 4 times as fast as with a hash table.

// A row is eight numbers: two by one pixel, four by two pixels (the first counts double), and one that says where the
// string's own strings stand in the row of its prefix. Strings are named by where their rows begin; 0: none yet.
struct BitStrings {
  uint16_t rows[kTableSize * 8];
};

// All pixels must be below 2, those of the strings that there are, too.
void UseBits(BitStrings& bits, const LzwStrings& strings);
const uint8_t* CodeBits(BitStrings& bits, LzwStrings& strings, const uint8_t* at, const uint8_t* end);
