#pragma once

// The encoder's way for pictures of the pixels 0 and 1 without long runs: each string has a row that tells what it
// becomes by the next pixel, and by the next two. Nothing is searched or compared: noise is coded 2.5 times and a
// checker 4 times as fast as with a hash table.

#include <cstdint>

#include "codec/lzw_strings.h"

// A row is eight numbers: two by one pixel, four by two pixels (the first counts double), and one that says where the
// string's own strings stand in the row of its prefix. Strings are named by where their rows begin; 0: none yet.
struct BitStrings {
  uint16_t rows[kTableSize * 8];
};

// All pixels must be below 2, those of the strings that there are, too.
void UseBits(BitStrings& bits, const LzwStrings& strings);
const uint8_t* CodeBits(BitStrings& bits, LzwStrings& strings, const uint8_t* at, const uint8_t* end);
