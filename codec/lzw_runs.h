#pragma once

// The encoder's way with runs, for pictures of even areas.
//
// There most pixels are like the one before, and most strings go on in one way, or in two. So what follows a string
// is looked for in three places:
//
// - When the same pixel comes again: what the string becomes stands in a row, by the length of the run that it then
//   ends in. How far a run goes is found many pixels at a time, and its code in one step, however long it is. (Since
//   every beginning of a string is a string, the lengths that have codes are those from 1 to some longest one.)
// - The first other pixel that ever followed stands with the string itself. Without one there are no others.
// - All others are in the hash table.
//
// With up to 16 colours each string has a row for other pixels instead, by pixel, and nothing is searched: 16 %
// faster.
//
// Even pictures are coded 3 to 80 times as fast as with the hash table alone; others would pay for looking in several
// places.

#include <cstdint>

#include "codec/lzw_strings.h"

// The string in hand.
struct RunInHand {
  uint32_t head;        // the string taken back to where its last run begins
  int32_t length;       // of that run, at least 1
  uint32_t last_pixel;  // of the string
};

// By code: that of the string with the first other pixel that followed, 0 for none; and that pixel.
struct FirstOthers {
  uint16_t code[4096];
  uint8_t pixel[4096];
};

// Valid as a whole from `UseRuns` on.
struct RunStrings {
  RunInHand hand;
  uint32_t row;           // pixels of a row; 0 without rows
  int32_t codes_used;     // entries of `codes` given away
  uint16_t first[4096];   // by head: where its place in `codes` begins; 0, a place without room, for most
  uint16_t codes[16384];  // each place: the longest run, the codes that there is room for, the codes from length 2 on
  union {
    uint16_t rows[16 * 4096];  // by code and other pixel: that of the string with that pixel; 0: none
    FirstOthers first_other;
  };
};

// All pixels must fit the code size, those of the strings that there are, too: one that does not could be taken for a
// string's code.
// `with_rows`: there is memory for the rows of other pixels.
void UseRuns(RunStrings& runs, StringTable& table, const LzwStrings& strings, bool with_rows);
const uint8_t* CodeRuns(RunStrings& runs, StringTable& table, LzwStrings& strings, const uint8_t* at,
                        const uint8_t* end);
