#pragma once

#include "host/reducing/canvas.h"
#include "host/reducing/nearest_color.h"

namespace host {

enum class Dithering { kNone, kDiffusion, kOrdered };

// What of a frame is to be shown with the colours of a table.
struct Reduction {
  const Canvas* source = nullptr;        // the frame
  const Canvas* source_below = nullptr;  // what the pixels below were made from: where that is the same, they stay
  const Canvas* below = nullptr;
  Rect place;  // outside of it nothing is done
};

// Sets each pixel of `wanted` within the place to the nearest colour, or to what is below already where that is as
// near. A pixel that stays takes no part in dithering: still areas keep still.
void Reduce(const Reduction& reduction, const std::vector<uint32_t>& colors, NearestColor& nearest,
            Dithering dithering, Canvas& wanted);

}  // namespace host
