#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace host {

// A colour is 0xRRGGBB; this one stands where nothing is shown.
constexpr uint32_t kClear = 0xFF000000;

struct Rect {
  int left = 0;
  int top = 0;
  int right = 0;  // the first column and row beyond
  int bottom = 0;

  bool empty() const { return left >= right || top >= bottom; }
  int width() const { return right - left; }
  int height() const { return bottom - top; }
  size_t size() const { return empty() ? 0 : static_cast<size_t>(width()) * static_cast<size_t>(height()); }

  // The smallest one that holds both.
  Rect With(const Rect& other) const {
    if (empty()) return other;
    if (other.empty()) return *this;
    return {std::min(left, other.left), std::min(top, other.top), std::max(right, other.right),
            std::max(bottom, other.bottom)};
  }
  Rect Within(const Rect& other) const {
    return {std::max(left, other.left), std::max(top, other.top), std::min(right, other.right),
            std::min(bottom, other.bottom)};
  }
};

// What a screen shows: a colour, or kClear, for each pixel.
struct Canvas {
  int width = 0;
  int height = 0;
  std::vector<uint32_t> pixels;

  Rect all() const { return {0, 0, width, height}; }
  const uint32_t* row(int y) const { return pixels.data() + static_cast<size_t>(y) * static_cast<size_t>(width); }
  uint32_t* row(int y) { return pixels.data() + static_cast<size_t>(y) * static_cast<size_t>(width); }
};

// Squared, in steps of the 256 of each primary colour.
inline int Distance(uint32_t a, uint32_t b) {
  const int red = static_cast<int>(a >> 16 & 0xFF) - static_cast<int>(b >> 16 & 0xFF);
  const int green = static_cast<int>(a >> 8 & 0xFF) - static_cast<int>(b >> 8 & 0xFF);
  const int blue = static_cast<int>(a & 0xFF) - static_cast<int>(b & 0xFF);
  return red * red + green * green + blue * blue;
}

// The smallest rectangle within `area` that holds all pixels for which wanted(place) is true, place counting them
// row by row through the whole canvas.
template <class F>
Rect Bounds(const Rect& area, int canvas_width, F wanted) {
  Rect found{area.right, area.bottom, area.left, area.top};
  for (int y = area.top; y < area.bottom; ++y) {
    const size_t row = static_cast<size_t>(y) * static_cast<size_t>(canvas_width);
    int x = area.left;
    while (x < area.right && !wanted(row + static_cast<size_t>(x))) ++x;
    if (x == area.right) continue;
    int last = area.right - 1;
    while (last >= found.right && !wanted(row + static_cast<size_t>(last))) --last;
    found.left = std::min(found.left, x);
    found.right = std::max(found.right, last + 1);
    found.top = std::min(found.top, y);
    found.bottom = y + 1;
  }
  return found.empty() ? Rect{} : found;
}

}  // namespace host
