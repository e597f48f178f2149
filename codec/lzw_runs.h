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
// Other pictures would pay for looking in several places; the encoder chooses at each clear code.

#include <cstdint>

struct GifEncoder;

// Valid as a whole while `in_use`.
struct RunStrings {
  int32_t in_use;         // 1 while strings are here, 0 while all are in the hash table
  int32_t last_pixel;     // of the string in hand
  uint32_t head;          // the string in hand, taken back to where its last run begins
  int32_t length;         // of that run, at least 1
  int32_t codes_used;     // entries of `codes` given away
  uint16_t first[4096];   // by head: where its place in `codes` begins; 0, a place without room, for most
  uint16_t codes[16384];  // each place: the longest run, the codes that there is room for, the codes from length 2 on
  uint16_t other_code[4096];  // by code: that of the string with the first other pixel that followed; 0: none
  uint8_t other_pixel[4096];  // that pixel
};

// Begins using runs. The encoder has no strings yet, and one pixel in hand that fits the code size.
void UseRuns(GifEncoder* encoder);

// Moves all strings into the hash table.
void LeaveRuns(GifEncoder* encoder);

// Codes pixels until `end`, or until all strings must be cleared; the result is where it stopped. All pixels must fit
// the code size: one that does not could be taken for a string's code.
const uint8_t* CodeRuns(GifEncoder* encoder, const uint8_t* at, const uint8_t* end);
