#pragma once

#include <string>

#include "host/host/picture.h"

namespace host {

// Pictures of other pictures and of texts, by libgd.

// Each pixel is the mean of those that it stands for, with their transparency. Null when there can be no such
// picture.
Ref<Picture> Scaled(const Picture& picture, int64_t width, int64_t height);

// Red where two pictures of one size look different, black elsewhere. Null when they are of two sizes.
Ref<Picture> Difference(const Picture& first, const Picture& second);

// Makes the picture just as large as the text, in a font that FreeType finds by its file or, by way of Fontconfig, by
// its name; `size` is that of the letters in pixels. Gives what went wrong, or an empty text.
std::string DrawLetters(Picture& picture, const std::string& text, const std::string& font, int64_t size,
                        uint32_t rgb);

}  // namespace host
