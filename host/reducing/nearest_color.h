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

  int Find(uint32_t rgb);  // the first of several that are equally near; 0 when there are none

 private:
  struct Cell {
    uint32_t begin = 0;
    uint32_t count = 0;  // 0: not asked for yet
  };
  void Fill(Cell& cell, uint32_t rgb);

  std::vector<uint32_t> colors_;
  std::vector<Cell> cells_;
  std::vector<uint32_t> found_;  // of all cells: a colour below its index
};

}  // namespace host
