#include "host/drawing.h"

#include <gdfonts.h>

#include <algorithm>

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
  uint32_t mixed = 0;
  for (const uint32_t shift : {0u, 8u, 16u}) {
    const uint32_t a = (above >> shift) & 0xFF;
    const uint32_t b = (below >> shift) & 0xFF;
    mixed |= ((a * opacity + b * (255 - opacity) + 127) / 255) << shift;
  }
  return mixed;
}

void CopyPixel(Picture& picture, int x, int y, const Picture& source, int from_x, int from_y) {
  const uint32_t transparency = source.TransparencyAt(from_x, from_y);
  if (transparency == 255) return;
  Blend(picture, x, y, source.pixels().Get(from_x, from_y), 255 - transparency);
}

}  // namespace

void Blend(Picture& picture, int x, int y, uint32_t rgb, uint32_t opacity) {
  Pixels& pixels = picture.pixels();
  pixels.Set(x, y, opacity == 255 ? rgb : Mix(pixels.Get(x, y), rgb, opacity));
}

void FillRectangle(Picture& picture, const Rectangle& area, uint32_t rgb) {
  const Clipped inside(Bounded(area), picture);
  for (int y = inside.top; y < inside.bottom; ++y) {
    for (int x = inside.left; x < inside.right; ++x) picture.pixels().Set(x, y, rgb);
  }
}

void DrawText(Picture& picture, int64_t x, int64_t y, std::string_view text, uint32_t rgb) {
  const gdFont& font = *gdFontGetSmall();
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
  for (int y = inside.top; y < inside.bottom; ++y) {
    const int64_t from_y = part.y + (y - target.y) * part.height / target.height;
    for (int x = inside.left; x < inside.right; ++x) {
      const int64_t from_x = part.x + (x - target.x) * part.width / target.width;
      if (source.Contains(from_x, from_y)) {
        CopyPixel(picture, x, y, source, static_cast<int>(from_x), static_cast<int>(from_y));
      }
    }
  }
}

}  // namespace host
