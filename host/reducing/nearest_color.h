#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace host {

// Finds the nearest of up to 256 colours, exactly. For each of 32 x 32 x 32 cells of the colour cube those that can
// be nearest to anything within are noted when first asked for: about ten, where there are 256.
class NearestColor {
 public:
  explicit NearestColor(std::span<const uint32_t> colors);

  // The first of several that are equally near; 0 when there are none.
  int Find(uint32_t rgb) {
    uint32_t& known = known_[rgb * 0x9E3779B1u >> (32 - kKnownBits)];
    if ((known & 0xFFFFFF) != rgb) known = static_cast<uint32_t>(Search(rgb)) << 24 | rgb;
    return static_cast<int>(known >> 24);
  }

 private:
  struct Cell {
    uint32_t begin = 0;
    uint32_t count = 0;  // 0: not asked for yet
  };
  static constexpr int kKnownBits = 12;
  void Fill(Cell& cell, uint32_t rgb);
  int Search(uint32_t rgb);

  std::vector<uint32_t> colors_;
  std::vector<uint32_t> known_;  // colours found lately, below their indexes, each at the place of its hash
  std::vector<Cell> cells_;
  std::vector<uint32_t> found_;  // of all cells: a colour below its index
};

}  // namespace host
