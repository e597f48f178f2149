#pragma once

// Turns rows of colour indexes into rows of 32-bit pixels.

#include <array>
#include <cstdint>

// One ready pixel for each index.
using PixelTable = std::array<uint32_t, 256>;

class RowRenderer {
 public:
  explicit RowRenderer(const PixelTable& table) : table_(table) {}

  // Writes `count` pixels, 4 bytes each, to `pixels`, which need not be aligned. Without indexes (null) all
  // are 0.
  void Render(const uint8_t* indexes, int64_t count, uint8_t* pixels) const;

 private:
  PixelTable table_;
};
