#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace host {

// An image whose pixels leave a choice: row by row, the index of each, and whether the transparent one does as well.
struct Choices {
  static constexpr int16_t kNoIndex = -1;  // in `own`: only the transparent one does

  std::vector<int16_t> own;
  std::vector<uint8_t> free;
  int transparent = -1;  // none does where this is negative
};

// Transparent where at least so many free pixels follow each other, else the pixel's own index where it has one.
std::vector<uint8_t> TransparentRuns(const Choices& choices, size_t at_least);

// Which of several strings of the same length is taken.
enum class Preference { kOldest, kNewest };

// At each code the choice that lets the encoder's strings go on longest.
std::vector<uint8_t> MatchStrings(const Choices& choices, int code_size, Preference preference);

// An image whose pixels may have any index whose colour is near enough.
struct NearChoices {
  std::vector<uint32_t> wanted;     // colours
  std::vector<uint8_t> nearest;     // the index to take where none is near enough
  std::vector<int> limits;          // squared distances
  std::vector<int> least;           // of the nearest colour
  std::vector<int> transparent_at;  // the squared distance of what stands there already; negative: it may not stay
  std::vector<uint32_t> colors;     // of the table
  int transparent = -1;
  int64_t code_cost = 0;  // what a code is worth in squared distances
};

// Weighs at each code how long strings go on against how far their colours are off.
std::vector<uint8_t> MatchNearStrings(const NearChoices& choices, int code_size);

}  // namespace host
