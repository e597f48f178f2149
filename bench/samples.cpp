#include "bench/samples.h"

#include <gif_lib.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>

#include "codec/picture_rows.h"
#include "codec/reader.h"

namespace {

struct Image {
  int32_t width, height;
  int32_t depth;                // bits per pixel; the colour table has 2 to this power entries
  std::vector<uint8_t> pixels;  // top row first
  int32_t frames = 1;           // images in the file; each is the same picture shifted
  bool own_tables = false;      // each image brings its own table
};

// Smooth light and shade with grain, the colours spread over the whole table.
Image Photo(int32_t width, int32_t height) {
  Image image{width, height, 8, {}};
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
Image UserInterface(int32_t width, int32_t height, int32_t depth) {
  Image image{width, height, depth, {}};
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

Image Noise(int32_t width, int32_t height, int32_t depth) {
  Image image{width, height, depth, {}};
  std::mt19937 random(3);
  for (int32_t i = 0; i < width * height; ++i) image.pixels.push_back(static_cast<uint8_t>(random() >> (32 - depth)));
  return image;
}

Image OneColour(int32_t side) { return {side, side, 8, std::vector<uint8_t>(static_cast<size_t>(side) * side, 5)}; }

// A ball of two dozen shades.
Image ShadedIcon(int32_t side) {
  Image image{side, side, 5, {}};
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
Image FlatIcon(int32_t side) {
  Image image{side, side, 4, {}};
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

// Lines of words on even paper, letters of `size` times seven by twelve pixels with soft edges, as a terminal shows
// them or a scanner sees them. Of 1 bit: without the edges.
Image Text(int32_t width, int32_t height, int32_t depth, int32_t size) {
  Image image{width, height, depth, std::vector<uint8_t>(static_cast<size_t>(width) * height, 0)};
  constexpr int32_t kLetters = 60;
  std::mt19937 random(4);
  const auto below = [&](int32_t end) { return static_cast<int32_t>(random() % static_cast<uint32_t>(end)); };
  const int32_t columns = 7 * size, lines = 12 * size, edges = (1 << depth) - 1;
  std::vector<std::vector<uint8_t>> letters(kLetters, std::vector<uint8_t>(static_cast<size_t>(columns) * lines));
  for (auto& letter : letters) {
    for (int stroke = 0; stroke < 3; ++stroke) {
      const bool upright = below(2) != 0;
      const int32_t at = size + below(4 * size), thick = std::max(1, size / 2);
      for (int32_t along = size; along < (upright ? 10 : 6) * size; ++along) {
        for (int32_t across = -1; across <= thick; ++across) {
          const int32_t x = upright ? at + across : along, y = upright ? along : 2 * at + across;
          const bool edge = across < 0 || across == thick;
          if (edge && depth == 1) continue;
          letter[static_cast<size_t>(y % lines) * columns + x % columns] =
              static_cast<uint8_t>(edge ? 1 + below(edges - 1) : edges);
        }
      }
    }
  }
  for (int32_t y = 5 * size; y + 2 * lines < height; y += lines + 2 * size) {
    const int32_t end = width - below(width / 2);
    for (int32_t x = 5 * size; x + 2 * columns < end; x += columns) {
      if (below(6) == 0) continue;  // between words
      const auto& letter = letters[static_cast<size_t>(below(kLetters))];
      for (int32_t row = 0; row < lines; ++row) {
        std::copy_n(letter.begin() + row * columns, columns,
                    image.pixels.begin() + static_cast<std::ptrdiff_t>(y + row) * width + x);
      }
    }
  }
  return image;
}

Image Gradient(int32_t width, int32_t height) {
  Image image{width, height, 8, {}};
  for (int32_t y = 0; y < height; ++y) {
    for (int32_t x = 0; x < width; ++x)
      image.pixels.push_back(static_cast<uint8_t>((x * 3 + y * 4) * 255 / (width * 3 + height * 4)));
  }
  return image;
}

Image Checker(int32_t side) {
  Image image{side, side, 1, {}};
  for (int32_t i = 0; i < side * side; ++i) image.pixels.push_back(static_cast<uint8_t>((i ^ i / side) & 1));
  return image;
}

Image Animated(Image image, int32_t frames, bool own_tables) {
  image.frames = frames;
  image.own_tables = own_tables;
  return image;
}

std::shared_ptr<ColorMapObject> Greys(int32_t depth) {
  std::shared_ptr<ColorMapObject> colours(GifMakeMapObject(1 << depth, nullptr), GifFreeMapObject);
  for (int i = 0; i < colours->ColorCount; ++i) {
    const auto level = static_cast<uint8_t>(i * 255 / (colours->ColorCount - 1));
    colours->Colors[i] = {level, level, level};
  }
  return colours;
}

// By an independent encoder.
Bytes Encode(const Image& image) {
  Bytes file;
  const auto append = [](GifFileType* gif, const GifByteType* bytes, int count) {
    auto* out = static_cast<Bytes*>(gif->UserData);
    out->insert(out->end(), bytes, bytes + count);
    return count;
  };
  GifFileType* gif = EGifOpen(&file, append, nullptr);
  const auto colours = Greys(image.depth);
  EGifPutScreenDesc(gif, image.width, image.height, image.depth, 0, colours.get());
  for (int32_t frame = 0; frame < image.frames; ++frame) {
    EGifPutImageDesc(gif, 0, 0, image.width, image.height, false, image.own_tables ? colours.get() : nullptr);
    for (int32_t y = 0; y < image.height; ++y) {
      const auto from = static_cast<std::ptrdiff_t>((y + frame * 3) % image.height) * image.width;
      Bytes line(image.pixels.begin() + from, image.pixels.begin() + from + image.width);
      EGifPutLine(gif, line.data(), image.width);
    }
  }
  EGifCloseFile(gif, nullptr);
  return file;
}

}  // namespace

std::vector<Sample> MadeSamples() {
  return {
      {"photo 1024 × 768", Encode(Photo(1024, 768)), {5.5, 2.8, 5}},
      {"animation, 20 full frames", Encode(Animated(Photo(320, 240), 20, false)), {5, 2.8, 0}},
      {"full frames, a palette each", Encode(Animated(Photo(480, 360), 20, true)), {6, 2.8, 0}},
      {"text screenshot, 32 colours", Encode(Text(1988, 1362, 5, 2)), {33, 0, 0}},
      {"user interface, 64 colours", Encode(UserInterface(3024, 1608, 6)), {34, 5, 15}},
      {"user interface, 16 colours", Encode(UserInterface(3024, 1608, 4)), {58, 5, 15}},
      {"scan 2480 × 3508, 16 greys", Encode(Text(2480, 3508, 4, 4)), {23, 5, 15}},
      {"scan 2480 × 3508, 1 bit", Encode(Text(2480, 3508, 1, 4)), {32, 0, 15}},
      {"smooth gradient", Encode(Gradient(1024, 768)), {12, 2.4, 0}},
      {"noise of 8 bits", Encode(Noise(1024, 768, 8)), {3.5, 2.7, 0}},
      {"noise of 1 bit", Encode(Noise(1024, 768, 1)), {18, 1.6, 0}},
      {"checker of 1 bit", Encode(Checker(2048)), {0, 3, 18}},
      {"one colour 4096²", Encode(OneColour(4096)), {80, 60, 40}},
      {"icon 32 × 32, shaded", Encode(ShadedIcon(32)), {7.5, 0, 0}},
      {"icon 32 × 32, flat", Encode(FlatIcon(32)), {7.5, 0, 0}},
  };
}

std::vector<Sample> SamplesOf(const std::string& folder) {
  std::vector<Sample> samples;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (entry.path().extension() != ".gif") continue;
    std::ifstream file(entry.path(), std::ios::binary);
    samples.push_back({entry.path().stem(), Bytes(std::istreambuf_iterator<char>(file), {}), {}});
  }
  std::sort(samples.begin(), samples.end(), [](const Sample& a, const Sample& b) { return a.name < b.name; });
  return samples;
}

Gif* ReadSample(const Bytes& file) {
  MyFILE stream = {file.data(), static_cast<int64_t>(file.size()), 0, nullptr};
  Gif* gif = NewGif();
  ReadGif(&stream, gif);
  return gif;
}

int64_t AllPixels(const Gif* gif) {
  int64_t pixels = 0;
  for (int32_t i = 0; i < gif->count; ++i) {
    if (const GifPicture* picture = gif->blocks[i]->picture) pixels += int64_t{picture->width} * picture->height;
  }
  return pixels;
}

const GifPicture* FirstPicture(const Gif* gif) {
  for (int32_t i = 0; i < gif->count; ++i) {
    if (gif->blocks[i]->picture) return gif->blocks[i]->picture;
  }
  return nullptr;
}

Bytes PixelsOf(const GifPicture* picture) {
  Bytes pixels;
  RowReader rows(picture);
  for (int32_t y = 0; y < picture->height; ++y) {
    const uint8_t* row = rows.Row(y);
    if (row) pixels.insert(pixels.end(), row, row + picture->width);
  }
  return pixels;
}
