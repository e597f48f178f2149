#include "host/classes/drawing.h"

#include <algorithm>
#include <vector>

#include "host/core/gd_library.h"

namespace host {
namespace {

// Coordinates beyond any picture, brought near enough to calculate with.
Rectangle Bounded(const Rectangle& area) {
  constexpr int64_t kFar = int64_t{1} << 30;
  return {std::clamp(area.x, -kFar, kFar), std::clamp(area.y, -kFar, kFar), std::clamp<int64_t>(area.width, 0, kFar),
          std::clamp<int64_t>(area.height, 0, kFar)};
}

// The part of a bounded area that lies in the picture.
struct Clipped {
  Clipped(const Rectangle& area, const Picture& picture)
      : left(Limit(area.x, picture.width())),
        right(Limit(area.x + area.width, picture.width())),
        top(Limit(area.y, picture.height())),
        bottom(Limit(area.y + area.height, picture.height())) {}

  static int Limit(int64_t coordinate, int size) {
    return static_cast<int>(std::clamp<int64_t>(coordinate, 0, size));
  }

  int left, right, top, bottom;
};

uint32_t Mix(uint32_t below, uint32_t above, uint32_t opacity) {
  if (opacity == 0 || opacity == 255) return opacity == 0 ? below : above;
  uint32_t mixed = 0;
  for (const uint32_t shift : {0u, 8u, 16u}) {
    const uint32_t a = (above >> shift) & 0xFF;
    const uint32_t b = (below >> shift) & 0xFF;
    mixed |= ((a * opacity + b * (255 - opacity) + 127) / 255) << shift;
  }
  return mixed;
}

// Part of a row of a picture, with its transparency.
class SourceRow {
 public:
  SourceRow(const Picture& picture, int first, int last)
      : picture_(picture),
        first_(first),
        colors_(static_cast<size_t>(last - first + 1)),
        transparency_(colors_.size()) {}

  void Read(int y) {
    picture_.pixels().Read(first_, y, colors_);
    picture_.ReadTransparency(first_, y, transparency_);
  }

  uint32_t Over(uint32_t below, int x) const {
    const auto at = static_cast<size_t>(x - first_);
    return Mix(below, colors_[at], 255 - transparency_[at]);
  }

 private:
  const Picture& picture_;
  int first_;
  std::vector<uint32_t> colors_;
  std::vector<uint32_t> transparency_;
};

}  // namespace

void Blend(Picture& picture, int x, int y, uint32_t rgb, uint32_t opacity) {
  picture.pixels().Set(x, y, Mix(picture.pixels().Get(x, y), rgb, opacity));
}

void FillRectangle(Picture& picture, const Rectangle& area, uint32_t rgb) {
  const Clipped inside(Bounded(area), picture);
  const std::vector<uint32_t> row(static_cast<size_t>(inside.right - inside.left), rgb);
  for (int y = inside.top; y < inside.bottom; ++y) picture.pixels().Write(inside.left, y, row);
}

void DrawText(Picture& picture, int64_t x, int64_t y, std::string_view text, uint32_t rgb) {
  const gdFont& font = *gd::FontGetSmall();
  for (const char c : text) {
    const int glyph = static_cast<unsigned char>(c) - font.offset;
    if (glyph >= 0 && glyph < font.nchars) {
      const char* bits = font.data + glyph * font.w * font.h;
      for (int i = 0; i < font.w * font.h; ++i) {
        if (bits[i] != 0) FillRectangle(picture, {x + i % font.w, y + i / font.w, 1, 1}, rgb);
      }
    }
    x += font.w;
  }
}

void DrawPicture(Picture& picture, const Rectangle& target_area, const Picture& source,
                 const Rectangle& source_area) {
  const Rectangle target = Bounded(target_area);
  const Rectangle part = Bounded(source_area);
  const Clipped inside(target, picture);
  // For the target's columns from `left` on, those of the source that they show.
  int left = inside.left;
  std::vector<int> columns;
  for (int x = inside.left; x < inside.right; ++x) {
    const int64_t from_x = part.x + (x - target.x) * part.width / target.width;
    if (from_x < 0) left = x + 1;
    if (from_x >= 0 && from_x < source.width()) columns.push_back(static_cast<int>(from_x));
  }
  if (columns.empty()) return;

  SourceRow source_row(source, columns.front(), columns.back());
  const bool copied = !source.mask() && part.width == target.width;
  std::vector<uint32_t> before(columns.size());
  std::vector<uint32_t> row(columns.size());
  for (int y = inside.top; y < inside.bottom; ++y) {
    const int64_t from_y = part.y + (y - target.y) * part.height / target.height;
    if (!source.Contains(0, from_y)) continue;
    picture.pixels().Read(left, y, before);
    if (copied) {
      source.pixels().Read(columns.front(), static_cast<int>(from_y), row);
    } else {
      source_row.Read(static_cast<int>(from_y));
      for (size_t i = 0; i < row.size(); ++i) row[i] = source_row.Over(before[i], columns[i]);
    }
    // Memory of a new picture that nobody writes to costs nothing: most masks are black.
    if (row != before) picture.pixels().Write(left, y, row);
  }
}

}  // namespace host
