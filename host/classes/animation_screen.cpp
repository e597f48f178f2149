#include "host/classes/animation_screen.h"

#include <algorithm>
#include <new>

namespace host {
namespace {

constexpr int64_t kLongestSide = 65535;
constexpr uint32_t kWhite = 0xFFFFFF;

std::vector<int> Places(int64_t screen, int64_t shown) {
  std::vector<int> places(static_cast<size_t>(shown));
  for (int64_t i = 0; i < shown; ++i) places[static_cast<size_t>(i)] = static_cast<int>(i * screen / shown);
  return places;
}

}  // namespace

bool AnimationScreen::Create(int64_t width, int64_t height, int64_t shown_width, int64_t shown_height) {
  if (width < 1 || width > kLongestSide || height < 1 || height > kLongestSide) return false;
  if (shown_width < 1 || shown_width > width || shown_height < 1 || shown_height > height) return false;
  std::vector<uint32_t> values(static_cast<size_t>(shown_width) * static_cast<size_t>(shown_height), kNothing);
  columns_ = Places(width, shown_width);
  rows_ = Places(height, shown_height);
  values_ = std::move(values);
  saved_.clear();
  return true;
}

std::pair<size_t, size_t> AnimationScreen::Shown(const std::vector<int>& places, int64_t first, int64_t count) {
  const int64_t end = count > kLongestSide ? first + kLongestSide + 1 : first + count;
  const auto from = std::lower_bound(places.begin(), places.end(), first);
  const auto to = std::lower_bound(from, places.end(), end);
  return {static_cast<size_t>(from - places.begin()), static_cast<size_t>(to - from)};
}

void AnimationScreen::Draw(std::span<const uint8_t> pixels, const Area& area, std::span<const uint32_t> values,
                           int64_t transparent) {
  const auto [left, columns] = Shown(columns_, area.left, area.width);
  const auto [top, rows] = Shown(rows_, area.top, area.height);
  for (size_t y = top; y < top + rows; ++y) {
    const auto from = static_cast<size_t>((rows_[y] - area.top) * area.width);
    if (from + static_cast<size_t>(area.width) > pixels.size()) return;
    uint32_t* to = &values_[y * columns_.size()];
    for (size_t x = left; x < left + columns; ++x) {
      const uint8_t index = pixels[from + static_cast<size_t>(columns_[x] - area.left)];
      if (index != transparent) to[x] = index < values.size() ? values[index] : 0;
    }
  }
}

void AnimationScreen::Fill(const Area& area, uint32_t value) {
  const auto [left, columns] = Shown(columns_, area.left, area.width);
  const auto [top, rows] = Shown(rows_, area.top, area.height);
  for (size_t y = top; y < top + rows; ++y) std::fill_n(&values_[y * columns_.size() + left], columns, value);
}

void AnimationScreen::Restore() {
  if (saved_.size() == values_.size()) values_.swap(saved_);
}

Ref<Picture> AnimationScreen::ToPicture(Host& host) const {
  Ref<Picture> picture = NewPicture(host, width(), height());
  if (!picture) throw std::bad_alloc();
  const size_t columns = columns_.size();
  std::vector<uint32_t> colors(columns);
  std::vector<uint32_t> mask(columns);
  for (int y = 0; y < height(); ++y) {
    const auto row = std::span(values_).subspan(static_cast<size_t>(y) * columns, columns);
    bool is_opaque = true;
    for (size_t x = 0; x < columns; ++x) {
      const bool nothing = row[x] == kNothing;
      is_opaque = is_opaque && !nothing;
      colors[x] = nothing ? 0 : row[x];
      mask[x] = nothing ? kWhite : 0;
    }
    picture->pixels().Write(0, y, colors);
    if (is_opaque) continue;
    if (!picture->MakeMask(host)) throw std::bad_alloc();
    picture->mask()->pixels().Write(0, y, mask);
  }
  return picture;
}

}  // namespace host
