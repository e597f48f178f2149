#pragma once

// Follows the codes of an image's data for their lengths alone: no pixel is made.

#include <cstdint>

#include "codec/format.h"

enum class WalkEnd : uint8_t {
  kDataEnds,       // no whole code is left
  kEndCode,        // an end code
  kUndefinedCode,  // a code that is neither defined nor being defined
};

// What the codes up to the first of these say. Bits are counted from the first of the data.
struct CodeWalk {
  int64_t codes;        // read, the last one too
  int64_t clear_codes;  // among them
  int64_t pixels;       // that their strings hold together
  int32_t highest;      // value of the pixels that the image has room for; -1: there are none
  WalkEnd end;
  int64_t ended_at;     // the bit where the last code begins; where the data ends, that where one would
  int64_t full_at;      // that of the first code after a full table, while the image wants pixels; -1: none
  int64_t full_pixels;  // those before it
  int64_t over_at;      // that of the first code with pixels beyond the image; -1: none
};

// Codes after a full table count on with the table as it is.
class CodeWalker {
 public:
  // For an image of `area` pixels. `code_size` is 0 to `kMaxMinimumCodeSize`.
  CodeWalker(int32_t code_size, int64_t area);

  // Takes what a sub-block holds, at most `kMaxSubBlock` bytes.
  void Add(const uint8_t* bytes, int64_t count);

  CodeWalk Finish();

 private:
  static constexpr int64_t kHeldBytes = 64 * kMaxSubBlock;

  void WalkHeld();
  void WalkBatches();
  bool WalkOne();
  void Restart();
  uint64_t BitsAt(int64_t bit) const;

  int64_t area_;
  int32_t code_size_;
  int32_t clear_code_;
  int32_t width_;        // bits of the next code
  int32_t next_;         // the entry that it defines; the end code, standing for none, after a clear code
  uint16_t latest_ = 0;  // pixels of the previous code's string
  bool ended_ = false;
  CodeWalk walk_{};

  int64_t at_ = 0;         // where the next code begins, in bits of `held_`
  int64_t held_from_ = 0;  // where `held_` begins, in bytes of the data
  int64_t held_bytes_ = 0;
  uint8_t held_[kHeldBytes + sizeof(uint64_t)];  // what is to be walked, and room for loads to run over
  uint16_t lengths_[kTableSize];                 // of each code's string
};
