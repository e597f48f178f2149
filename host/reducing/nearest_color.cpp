#include "host/reducing/nearest_color.h"

#include <algorithm>

#include "host/reducing/canvas.h"

namespace host {
namespace {

constexpr int kCellBits = 5;
constexpr int kCellSize = 256 >> kCellBits;
constexpr int kIndexShift = 24;

size_t CellOf(uint32_t rgb) { return (rgb >> 9 & 0x7C00) | (rgb >> 6 & 0x3E0) | (rgb >> 3 & 0x1F); }

// The squares of the least and the greatest distance from a value to a cell's side.
struct Reach {
  float least;
  float greatest;
};
Reach ReachOf(int value, int cell_begin) {
  const int below = cell_begin - value;
  const int above = value - (cell_begin + kCellSize - 1);
  const auto least = static_cast<float>(std::max({below, above, 0}));
  const auto greatest = static_cast<float>(std::max(below + kCellSize - 1, above + kCellSize - 1));
  return {least * least, greatest * greatest};
}

}  // namespace

NearestColor::NearestColor(std::span<const uint32_t> colors)
    : colors_(colors.begin(), colors.end()), known_(size_t{1} << kKnownBits), cells_(size_t{1} << 3 * kCellBits) {
  known_[0] = 1;  // black belongs there, and nothing is known of it yet; elsewhere black stands for nothing
}

void NearestColor::Fill(Cell& cell, uint32_t rgb) {
  const auto begin_of = [rgb](int shift) { return static_cast<int>(rgb >> shift & 0xFF & ~(kCellSize - 1u)); };
  float least[256];
  float bound = 1e9F;
  const size_t count = std::min<size_t>(colors_.size(), 256);
  for (size_t i = 0; i < count; ++i) {
    const uint32_t color = colors_[i];
    const Reach red = ReachOf(static_cast<int>(color >> 16 & 0xFF), begin_of(16));
    const Reach green = ReachOf(static_cast<int>(color >> 8 & 0xFF), begin_of(8));
    const Reach blue = ReachOf(static_cast<int>(color & 0xFF), begin_of(0));
    least[i] = red.least + green.least + blue.least;
    bound = std::min(bound, red.greatest + green.greatest + blue.greatest);
  }
  cell.begin = static_cast<uint32_t>(found_.size());
  for (size_t i = 0; i < count; ++i) {
    if (least[i] <= bound) found_.push_back(static_cast<uint32_t>(i) << kIndexShift | colors_[i]);
  }
  cell.count = static_cast<uint32_t>(found_.size()) - cell.begin;
}

int NearestColor::Search(uint32_t rgb) {
  if (colors_.empty()) return 0;
  Cell& cell = cells_[CellOf(rgb)];
  if (cell.count == 0) Fill(cell, rgb);
  // Distances with indexes below them: their order is a matter of chance, which branches would not take well.
  uint32_t least = UINT32_MAX;
  for (uint32_t i = cell.begin; i < cell.begin + cell.count; ++i) {
    const uint32_t color = found_[i];
    least = std::min(least, static_cast<uint32_t>(Distance(color, rgb)) << 8 | color >> kIndexShift);
  }
  return static_cast<int>(least & 0xFF);
}

}  // namespace host
