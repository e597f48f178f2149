#include "bench/sample_images.h"

#include <gif_lib.h>

#include <algorithm>
#include <cmath>
#include <random>

// Smooth light and shade with grain, the colours spread over the whole table.
static SampleImage Photo(int32_t width, int32_t height) {
  SampleImage image{"photo " + std::to_string(width) + "x" + std::to_string(height), width, height, 8, {}};
  std::mt19937 random(1);
  std::normal_distribution<double> grain(0, 1.6);
  for (int32_t y = 0; y < height; ++y) {
    for (int32_t x = 0; x < width; ++x) {
      const double fx = x * 6.0 / width, fy = y * 6.0 / height;
      const double light = 128 + 50 * std::sin(fx + std::cos(fy)) + 35 * std::sin(3 * fx * fy / 6) +
                           20 * std::cos(7 * fy + 2 * fx) + grain(random);
      image.pixels.push_back(static_cast<uint8_t>(std::clamp(light / 4, 0.0, 63.0) * 4));
    }
  }
  return image;
}

// Windows with borders, text and buttons on an even ground.
static SampleImage UserInterface(int32_t width, int32_t height, int32_t depth) {
  SampleImage image{"user interface, " + std::to_string(1 << depth) + " colours", width, height, depth, {}};
  image.pixels.assign(static_cast<size_t>(width) * height, 1);
  std::mt19937 random(2);
  const auto below = [&](int32_t end) { return static_cast<int32_t>(random() % static_cast<uint32_t>(end)); };
  const auto fill = [&](int32_t left, int32_t top, int32_t right, int32_t bottom, int32_t colour) {
    for (int32_t y = std::max(top, 0); y < std::min(bottom, height); ++y) {
      for (int32_t x = std::max(left, 0); x < std::min(right, width); ++x) {
        image.pixels[static_cast<size_t>(y) * width + x] = static_cast<uint8_t>(colour);
      }
    }
  };
  for (int window = 0; window < 12; ++window) {
    const int32_t left = below(width - 100), top = below(height - 80);
    const int32_t right = left + 100 + below(width / 3), bottom = top + 80 + below(height / 3);
    const int32_t ink = below(1 << depth);
    fill(left, top, right, bottom, below(1 << depth));
    fill(left + 1, top + 1, right - 1, bottom - 1, below(1 << depth));
    fill(left + 1, top + 1, right - 1, top + 20, below(1 << depth));
    for (int32_t line = top + 30; line + 10 < bottom; line += 14) {
      for (int32_t letter = left + 8; letter + 8 < right - below(90); letter += 7) {
        for (int stroke = 0; stroke < 3; ++stroke) {
          const int32_t x = letter + below(5), y = line + below(8);
          below(2) ? fill(x, line, x + 1, line + 8, ink) : fill(letter, y, letter + 5, y + 1, ink);
        }
      }
    }
  }
  return image;
}

static SampleImage Noise(int32_t width, int32_t height) {
  SampleImage image{"noise", width, height, 8, {}};
  std::mt19937 random(3);
  for (int32_t i = 0; i < width * height; ++i) image.pixels.push_back(static_cast<uint8_t>(random() >> 24));
  return image;
}

static SampleImage OneColour(int32_t side) {
  return {"one colour " + std::to_string(side) + "^2", side, side, 8,
          std::vector<uint8_t>(static_cast<size_t>(side) * side, 5)};
}

// A ball of two dozen shades.
static SampleImage ShadedIcon(int32_t side) {
  SampleImage image{"icon 32x32, shaded", side, side, 5, {}};
  for (int32_t y = 0; y < side; ++y) {
    for (int32_t x = 0; x < side; ++x) {
      const int32_t radius = (x - side / 2) * (x - side / 2) + (y - side / 2) * (y - side / 2);
      const bool inside = radius < side * side / 5;
      image.pixels.push_back(inside ? static_cast<uint8_t>(4 + radius / 12 % 24) : uint8_t{0});
    }
  }
  return image;
}

// A folder with a tab, an outline and a shadow, in five of 16 colours.
static SampleImage FlatIcon(int32_t side) {
  SampleImage image{"icon 32x32, flat", side, side, 4, {}};
  const auto inside = [&](int32_t x, int32_t y, int32_t by) {
    const bool body = x >= 2 + by && x < side - 4 - by && y >= 9 + by && y < side - 5 - by;
    const bool tab = x >= 3 + by && x < 14 - by && y >= 5 + by && y < 12;
    return body || tab;
  };
  for (int32_t y = 0; y < side; ++y) {
    for (int32_t x = 0; x < side; ++x) {
      const int32_t paper = y < 14 ? 2 : 3;
      const int32_t shadow = inside(x - 2, y - 2, 0) ? 4 : 0;
      image.pixels.push_back(static_cast<uint8_t>(inside(x, y, 1) ? paper : inside(x, y, 0) ? 1 : shadow));
    }
  }
  return image;
}

std::vector<SampleImage> SampleImages() {
  SampleImage animation = Photo(320, 240);
  animation.name = "animation, 20 full frames";
  animation.frames = 20;
  return {Photo(1024, 768),
          std::move(animation),
          UserInterface(1024, 768, 4),
          UserInterface(1024, 768, 6),
          Noise(1024, 768),
          OneColour(4096),
          ShadedIcon(32),
          FlatIcon(32)};
}

std::vector<uint8_t> EncodeSample(const SampleImage& image) {
  std::vector<uint8_t> file;
  const auto append = [](GifFileType* gif, const GifByteType* bytes, int count) {
    auto* out = static_cast<std::vector<uint8_t>*>(gif->UserData);
    out->insert(out->end(), bytes, bytes + count);
    return count;
  };
  GifFileType* gif = EGifOpen(&file, append, nullptr);
  ColorMapObject* colours = GifMakeMapObject(1 << image.depth, nullptr);
  for (int i = 0; i < colours->ColorCount; ++i) {
    const auto level = static_cast<uint8_t>(i * 255 / (colours->ColorCount - 1));
    colours->Colors[i] = {level, level, level};
  }
  EGifPutScreenDesc(gif, image.width, image.height, image.depth, 0, colours);
  for (int32_t frame = 0; frame < image.frames; ++frame) {
    EGifPutImageDesc(gif, 0, 0, image.width, image.height, false, nullptr);
    for (int32_t y = 0; y < image.height; ++y) {
      const auto from = static_cast<size_t>((y + frame * 3) % image.height) * static_cast<size_t>(image.width);
      std::vector<uint8_t> line(image.pixels.begin() + static_cast<std::ptrdiff_t>(from),
                                image.pixels.begin() + static_cast<std::ptrdiff_t>(from) + image.width);
      EGifPutLine(gif, line.data(), image.width);
    }
  }
  GifFreeMapObject(colours);
  EGifCloseFile(gif, nullptr);
  return file;
}
