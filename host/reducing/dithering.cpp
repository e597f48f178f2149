#include "host/reducing/dithering.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace host {
namespace {

using Triple = std::array<int, 3>;

uint32_t Clamped(uint32_t rgb, const Triple& added) {
  uint32_t result = 0;
  for (size_t k = 0; k < 3; ++k) {
    const int part = static_cast<int>(rgb >> (16 - 8 * k) & 0xFF) + added[k];
    result = result << 8 | static_cast<uint32_t>(std::clamp(part, 0, 255));
  }
  return result;
}

int Part(uint32_t rgb, size_t k) { return static_cast<int>(rgb >> (16 - 8 * k) & 0xFF); }

class Reducer {
 public:
  Reducer(const Reduction& reduction, const std::vector<uint32_t>& colors, NearestColor& nearest, Canvas& wanted)
      : now_(reduction), colors_(colors), nearest_(nearest), wanted_(wanted) {}

  void Nearest() {
    uint32_t last = kClear;
    uint32_t found = kClear;
    int distance = 0;
    ForEachRow([&](size_t row) {
      for (size_t at = row; at < row + width(); ++at) {
        const uint32_t source = Source(at);
        if (Stays(at, source)) continue;
        if (source != last) {
          last = source;
          found = Find(source);
          distance = Distance(found, source);
        }
        const uint32_t below = now_.below->pixels[at];
        wanted_.pixels[at] = below != kClear && Distance(below, source) <= distance ? below : found;
      }
    });
  }

  // Floyd's and Steinberg's shares of what a pixel's colour is off: 7 of 16 to the right, 3, 5 and 1 below. No more
  // is carried than lies between colours: beyond the outermost it would pile up, and come out as specks.
  void Diffuse() {
    const int most = Spacing();
    std::vector<Triple> off(width() + 2);
    std::vector<Triple> off_next(width() + 2);
    ForEachRow([&](size_t row) {
      std::fill(off_next.begin(), off_next.end(), Triple{});
      for (size_t x = 0; x < width(); ++x) {
        const size_t at = row + x;
        const uint32_t source = Source(at);
        if (Stays(at, source)) continue;
        Triple added;
        for (size_t k = 0; k < 3; ++k) added[k] = std::clamp(off[x + 1][k] / 16, -most, most);
        const uint32_t asked = Clamped(source, added);
        const uint32_t found = Find(asked);
        wanted_.pixels[at] = found;
        for (size_t k = 0; k < 3; ++k) {
          const int missing = Part(asked, k) - Part(found, k);
          off[x + 2][k] += 7 * missing;
          off_next[x][k] += 3 * missing;
          off_next[x + 1][k] += 5 * missing;
          off_next[x + 2][k] += missing;
        }
      }
      off.swap(off_next);
    });
  }

  void Order() {
    const int spread = Spacing();
    std::array<int, 64> added;
    for (size_t i = 0; i < added.size(); ++i) added[i] = Threshold(i % 8, i / 8) * spread / 64;
    const auto row_length = static_cast<size_t>(wanted_.width);
    const auto left = static_cast<size_t>(now_.place.left);
    ForEachRow([&](size_t row) {
      const int* const thresholds = &added[row / row_length % 8 * 8];
      for (size_t x = 0; x < width(); ++x) {
        const size_t at = row + x;
        const uint32_t source = Source(at);
        if (Stays(at, source)) continue;
        const int threshold = thresholds[(left + x) % 8];
        wanted_.pixels[at] = Find(Clamped(source, {threshold, threshold, threshold}));
      }
    });
  }

 private:
  size_t width() const { return static_cast<size_t>(now_.place.width()); }
  uint32_t Source(size_t at) const { return now_.source->pixels[at]; }
  uint32_t Find(uint32_t rgb) { return colors_[static_cast<size_t>(nearest_.Find(rgb))]; }

  template <class F>
  void ForEachRow(F f) {
    for (int y = now_.place.top; y < now_.place.bottom; ++y) {
      f(static_cast<size_t>(y) * static_cast<size_t>(wanted_.width) + static_cast<size_t>(now_.place.left));
    }
  }

  // Whether the pixel is settled without a look at colours.
  bool Stays(size_t at, uint32_t source) {
    if (source == kClear) {
      wanted_.pixels[at] = kClear;
      return true;
    }
    if (source != now_.source_below->pixels[at]) return false;
    wanted_.pixels[at] = now_.below->pixels[at];
    return true;
  }

  // -31 to 32: the places of a square of eight by eight, each far from those before it.
  static int Threshold(size_t x, size_t y) {
    size_t rank = 0;
    for (size_t bit = 0; bit < 3; ++bit) {
      const size_t right = x >> bit & 1;
      const size_t down = y >> bit & 1;
      rank = rank << 2 | (right ^ down) << 1 | down;
    }
    return static_cast<int>(rank) - 31;
  }

  // How far a colour is from the next one, on average, along one primary colour.
  int Spacing() const {
    double sum = 0;
    for (const uint32_t a : colors_) {
      int least = INT32_MAX;
      for (const uint32_t b : colors_) {
        if (a != b) least = std::min(least, Distance(a, b));
      }
      sum += least == INT32_MAX ? 0 : std::sqrt(least / 3.0);
    }
    return static_cast<int>(sum / static_cast<double>(std::max<size_t>(1, colors_.size())));
  }

  const Reduction& now_;
  const std::vector<uint32_t>& colors_;
  NearestColor& nearest_;
  Canvas& wanted_;
};

}  // namespace

void Reduce(const Reduction& reduction, const std::vector<uint32_t>& colors, NearestColor& nearest,
            Dithering dithering, Canvas& wanted) {
  Reducer reducer(reduction, colors, nearest, wanted);
  switch (dithering) {
    case Dithering::kNone:
      return reducer.Nearest();
    case Dithering::kDiffusion:
      return reducer.Diffuse();
    case Dithering::kOrdered:
      return reducer.Order();
  }
}

}  // namespace host
