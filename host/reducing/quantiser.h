#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "host/reducing/settling.h"

namespace host {

// Chooses the colours that pictures are shown with: those for which the squared distances of all pixels are small.
class Quantiser {
 public:
  void Add(uint32_t rgb, uint32_t times = 1);
  void AddRow(const uint32_t* colors, size_t count);  // without those that are clear

  // At most so many (1 to 256); those that were added themselves, in order of appearance, where they are few enough.
  std::vector<uint32_t> Choose(size_t most) const;
  // Whether there are at most so many (up to 256) different ones.
  bool HasAtMost(size_t count) const { return !folded_ && seen_.size() <= count; }

  using Point = ColorPoint;
  std::vector<Point> Points() const;  // what was added; those of a small cell may be one

 private:
  struct Seen {
    uint32_t rgb;
    uint32_t count;
  };
  struct Cell {
    uint32_t count = 0;
    uint32_t red = 0;  // the sums of what lies above the cell's corner
    uint32_t green = 0;
    uint32_t blue = 0;
  };

  void AddSome(const uint32_t* colors, size_t count);
  void AddToCell(uint32_t rgb, uint32_t times);
  void Fold();
  // Each colour for itself, until they are too many: then those of a cell of the cube together.
  std::vector<Seen> seen_;
  std::vector<uint32_t> slots_;  // a hash table of places in seen_, plus one
  bool folded_ = false;
  uint32_t random_ = 1;
  std::vector<Cell> cells_;
  std::vector<uint32_t> used_;  // cells, in order of appearance
};

}  // namespace host
