#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace host {

struct ColorPoint {  // of the colour cube
  std::array<float, 3> at;
  float count;
};

// Up to 256 colours, moved to where the squared distances of the points to their nearest ones are small.
std::vector<uint32_t> Settled(const std::vector<ColorPoint>& points, const std::vector<uint32_t>& colors);

}  // namespace host
