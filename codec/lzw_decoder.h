#pragma once

// The variable-length LZW codes of an image's data (GIF89a, section 22 and appendix F), decoded row by row.
//
// This decoder defines what every stream means, sound or damaged. `codec/image_decoder.h` gives the same
// pixels faster while nothing unusual is met.

#include <cstdint>

#include "codec/byte_stream.h"
#include "codec/code_input.h"
#include "codec/format.h"

constexpr int32_t kNoCode = 4098;  // where there is no code

// Pixels that an entry holds itself. Damaged data may name a string of thousands row after row, which is put together
// faster from pieces than from single pixels.
constexpr int32_t kSuffix = 8;

// The state between two rows of one image. Codes below `clear_code` are pixel values, those above `end_code`
// table entries.
struct GifDecoder {
  int32_t code_size;            // the minimum code size that the file gives, 0 to `kMaxMinimumCodeSize`
  int32_t clear_code;           // 2 to the power `code_size`
  int32_t end_code;             // `clear_code` + 1
  int32_t code_count;           // codes so far, counted on from `clear_code` + 2; a code read defines entry
                                // `code_count` - 2
  int32_t code_width;           // bits of the next code, up to `kMaxCodeWidth`
  int32_t width_limit;          // 2 to the power `code_width`: the count that widens the codes
  int32_t last_code;            // the previous code; `kNoCode` in the beginning and after a clear code
  int32_t stack_depth;          // pixels on `stack` that wait for the next row
  CodeInput* input;             // the image's data, borrowed
  int32_t pushed_code;          // the table code whose string fills `stack` from the bottom; `kNoCode`: unknown
  int32_t pushed_depth;         // that string's pixels
  uint8_t stack[kTableSize];    // a decoded string, its last pixel at the bottom
  uint64_t suffix[kTableSize];  // the last pixels of each entry's string, at most `kSuffix`, the last one lowest
  uint8_t suffix_length[kTableSize];  // how many
  uint16_t prefix[kTableSize];        // the code of the string without them; `kNoCode`: entry not defined
};

// Makes a decoder ready for the first row of an image, but for its input. `code_size` is 0 to `kMaxMinimumCodeSize`.
void SetUpGifDecoder(GifDecoder* decoder, int32_t code_size);

// Decodes the next `length` pixels into `line` and gives how many there were; reads nothing when `line` is null. Past
// the end of the data every bit is 0. Bad data is not reported: it ends the call early, later pixels keep their
// values, and the next call goes on from there with the `last_code` (unless cleared) and the `stack_depth` that this
// call began with. The stream may be read ahead, though never beyond the image's data.
int32_t ReadGifLine(MyFILE* stream, GifDecoder* decoder, uint8_t* line, int32_t length);

// The part of `ReadGifLine` that follows when the first `done` pixels stand in `line` already, none wait on
// the stack and `last_code` was the previous code; the record's `last_code` and `stack_depth` are still those
// that the row began with.
int32_t ContinueGifLine(MyFILE* stream, GifDecoder* decoder, uint8_t* line, int32_t length, int32_t done,
                        int32_t last_code);

// True when all codes to come are 0 and no pixel waits: all rows to come are zeros.
bool OnlyZerosFollow(const GifDecoder* decoder);

// True when all codes to come are 0 and the next is an error that changes nothing: all rows of `length` pixels to
// come are alike.
bool RepeatsForGood(const GifDecoder* decoder, int32_t length);

// Makes an entry of a code's string and one more pixel.
void DefineEntry(GifDecoder* decoder, int32_t entry, int32_t code, uint8_t pixel);
