#pragma once

#include <cstdint>
#include <string_view>

#include "host/host/picture.h"

namespace host {

// Drawing, the same on every kind of picture. What lies outside the picture is not drawn.

struct Rectangle {
  int64_t x, y, width, height;
};

void Blend(Picture& picture, int x, int y, uint32_t rgb, uint32_t opacity);  // opacity 0 to 255
void FillRectangle(Picture& picture, const Rectangle& area, uint32_t rgb);
// In libgd's small built-in font (6 by 13 pixels); (x, y) is the first character's top left corner.
void DrawText(Picture& picture, int64_t x, int64_t y, std::string_view text, uint32_t rgb);
// Part of a picture, scaled to fill the target, with its mask honoured.
void DrawPicture(Picture& picture, const Rectangle& target_area, const Picture& source, const Rectangle& source_area);

}  // namespace host
