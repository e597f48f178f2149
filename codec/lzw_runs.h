#pragma once

// The encoder's way with runs, for pictures of even areas.
//
// There most pixels are like the one before, and strings that end in a run are held apart from all others:
//
// - Strings of one colour: how far a run goes is found many pixels at a time, and its code in one step, however
//   long it is. Since every beginning of a string is a string, the lengths that a colour has codes for are those
//   from 1 to some longest one.
// - Strings of several colours that go on with their last pixel: a list from code to code, shorter to follow than the
//   hash table is to search.
//
// Other pictures would pay for looking at what comes; the encoder chooses at each clear code.

#include <cstdint>

struct GifEncoder;

struct ColourRuns {
  uint16_t longest;  // pixels, at least 1: the colour itself
  uint16_t first;    // where in `RunStrings::codes` the codes of lengths 2 to `longest` stand
  uint16_t room;     // codes that have room there
};

// Valid as a whole while `in_use`.
struct RunStrings {
  int32_t in_use;      // 1 while strings that end in a run are here, 0 while all are in the hash table
  int32_t last_pixel;  // of the string in hand
  int32_t length;      // its pixels if they are all of one colour, else 0
  int32_t codes_used;  // entries of `codes` given to colours
  ColourRuns colours[256];
  uint16_t codes[16384];
  uint16_t
      again[4096];  // by the code of a string of several colours: that of the string and its last pixel again, or 0
};

// Begins using runs. The encoder has no strings yet, and one pixel in hand that fits the code size.
void UseRuns(GifEncoder* encoder);

// Moves all strings into the hash table.
void LeaveRuns(GifEncoder* encoder);

// Codes pixels until `end`, or until all strings must be cleared; the result is where it stopped. All pixels must fit
// the code size: one that does not could be taken for a string's code.
const uint8_t* CodeRuns(GifEncoder* encoder, const uint8_t* at, const uint8_t* end);
