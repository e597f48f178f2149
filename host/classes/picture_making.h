#pragma once

#include <cstdint>
#include <string>

#include "host/host/host.h"
#include "host/host/picture.h"

namespace host {

// Pictures of other pictures and of texts, by libgd. Each throws std::runtime_error when it can't be made.

// Each pixel is the mean of those that it stands for, with their transparency.
Ref<Picture> Scaled(Host& host, const Picture& picture, int64_t width, int64_t height);

// Red where two pictures of one size look different, black elsewhere.
Ref<Picture> Difference(Host& host, const Picture& first, const Picture& second);

// In a font that FreeType finds by its file or, by way of Fontconfig, by its name; `size` is that of the letters in
// pixels.
struct Lettering {
  std::string text;
  std::string font;
  int64_t size;
  uint32_t rgb;
};

// Makes the picture just as large as the text.
void DrawLetters(Host& host, Picture& picture, Lettering lettering);

}  // namespace host
