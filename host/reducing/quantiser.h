#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace host {

// Chooses the colours that pictures are shown with: those for which the squared distances of all pixels are small.
class Quantiser {
 public:
  void Add(uint32_t rgb, uint32_t times = 1);
  void AddRow(const uint32_t* colors, size_t count);  // without those that are clear

  uint64_t pixels() const { return pixels_; }
  // At most so many (1 to 256), in no order; those that were added themselves where they are few enough.
  std::vector<uint32_t> Choose(size_t most) const;
  // The distinct colours in order of appearance where there are at most 256; else the first 257 of them.
  const std::vector<uint32_t>& distinct() const { return distinct_; }

 private:
  struct Cell {
    uint32_t count = 0;
    uint32_t red = 0;  // the sums of what lies above the cell's corner
    uint32_t green = 0;
    uint32_t blue = 0;
  };
  void Note(uint32_t rgb);

  std::vector<Cell> cells_;
  std::vector<uint32_t> used_;  // cells, in order of appearance
  std::vector<uint32_t> distinct_;
  std::vector<uint32_t> slots_;  // a hash table of the distinct ones
  uint64_t pixels_ = 0;
};

}  // namespace host
