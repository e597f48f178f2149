#include "host/classes/picture_colors.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <unordered_map>
#include <unordered_set>

namespace host {
namespace {

constexpr uint32_t kHalfTransparent = 128;

// Calls f(colour, whether it is more than half transparent) for each pixel, row by row, until that gives false.
template <class F>
void ForEachPixel(const Picture& picture, F f) {
  std::vector<uint32_t> colors(static_cast<size_t>(picture.width()));
  std::vector<uint32_t> transparency(colors.size());
  for (int y = 0; y < picture.height(); ++y) {
    picture.pixels().Read(0, y, colors);
    picture.ReadTransparency(0, y, transparency);
    for (size_t x = 0; x < colors.size(); ++x) {
      if (!f(colors[x], transparency[x] >= kHalfTransparent)) return;
    }
  }
}

uint8_t Nearest(uint32_t rgb, std::span<const uint32_t> colors) {
  const auto distance = [rgb](uint32_t other) {
    int sum = 0;
    for (const uint32_t shift : {0u, 8u, 16u}) {
      const int away = static_cast<int>(rgb >> shift & 0xFF) - static_cast<int>(other >> shift & 0xFF);
      sum += away * away;
    }
    return sum;
  };
  const auto nearest = std::ranges::min_element(colors, {}, distance);
  return static_cast<uint8_t>(nearest - colors.begin());
}

}  // namespace

std::vector<uint32_t> ColorsOf(const std::string& list) {
  std::vector<uint32_t> colors(list.size() / sizeof(uint32_t));
  if (!colors.empty()) std::memcpy(colors.data(), list.data(), colors.size() * sizeof(uint32_t));
  return colors;
}

std::string ListOf(std::span<const uint32_t> colors) {
  return {reinterpret_cast<const char*>(colors.data()), colors.size_bytes()};
}

std::vector<uint32_t> DistinctColors(const Picture& picture, size_t most) {
  std::vector<uint32_t> distinct;
  std::unordered_set<uint32_t> seen;
  ForEachPixel(picture, [&](uint32_t rgb, bool is_transparent) {
    if ((distinct.empty() || distinct.back() != rgb) && !is_transparent && seen.insert(rgb).second) {
      distinct.push_back(rgb);
    }
    return distinct.size() <= most;
  });
  return distinct;
}

void NearestIndexes(const Picture& picture, std::span<const uint32_t> colors, int64_t transparent,
                    std::span<std::byte> to) {
  // The transparent index is no colour.
  std::vector<uint32_t> opaque(colors.begin(), colors.end());
  std::vector<uint8_t> places;
  for (size_t i = 0; i < opaque.size() && i < 256; ++i) places.push_back(static_cast<uint8_t>(i));
  opaque.resize(places.size());
  if (transparent >= 0 && static_cast<size_t>(transparent) < opaque.size()) {
    opaque.erase(opaque.begin() + transparent);
    places.erase(places.begin() + transparent);
  }
  if (opaque.empty()) return;
  std::unordered_map<uint32_t, uint8_t> known;
  size_t at = 0;
  uint32_t last = 0;
  uint8_t last_index = places[Nearest(0, opaque)];
  ForEachPixel(picture, [&](uint32_t rgb, bool is_transparent) {
    if (rgb != last) {
      const auto [found, is_new] = known.try_emplace(rgb);
      if (is_new) found->second = places[Nearest(rgb, opaque)];
      last = rgb;
      last_index = found->second;
    }
    to[at++] = static_cast<std::byte>(is_transparent && transparent >= 0 ? transparent : last_index);
    return true;
  });
}

Ref<MemoryBlock> NewMemoryBlock(Host& host, size_t size) {
  Ref<MemoryBlock> block = host.heap().Make<MemoryBlock>(host.RequireClass("MemoryBlock"));
  if (!block->Resize(static_cast<int64_t>(size), host.options().largest_block)) throw std::bad_alloc();
  return block;
}

}  // namespace host
