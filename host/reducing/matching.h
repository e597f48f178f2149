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

// The same where a pixel may also have another index, whose colour is not further from the wanted one than `limits`
// says for it.
struct NearChoices {
  std::vector<uint32_t> wanted;
  std::vector<int> limits;          // squared distances
  std::vector<int> transparent_at;  // the squared distance of what stands there already; negative: it may not stay
  std::vector<uint32_t> colors;     // of the table
  int transparent = -1;
};
std::vector<uint8_t> MatchNearStrings(const NearChoices& choices, std::span<const uint8_t> nearest, int code_size);

}  // namespace host
