// Draws animations of different kinds as PNG files, FOLDER/NAME/000.png and so on, for tools/measure_building:
//
//   make_animations FOLDER [NAME...]
//
// Each says what makes it hard to store: much that stands still, nothing that does, few colours, many, transparency.

#include <gd.h>
#include <gdfonts.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace {

struct Destroy {
  void operator()(gdImageStruct* image) const { gdImageDestroy(image); }
};
using Image = std::unique_ptr<gdImageStruct, Destroy>;

Image NewImage(int width, int height) { return Image(gdImageCreateTrueColor(width, height)); }

int Rgb(double red, double green, double blue) {
  const auto byte = [](double value) { return static_cast<int>(std::clamp(value, 0.0, 255.0)); };
  return gdTrueColor(byte(red), byte(green), byte(blue));
}

// The same number for the same place, from 0 to 1.
double Random(int x, int y, int z = 0) {
  uint32_t h = static_cast<uint32_t>(x) * 0x9E3779B1u ^ static_cast<uint32_t>(y) * 0x85EBCA77u ^
               static_cast<uint32_t>(z) * 0xC2B2AE3Du;
  h = (h ^ h >> 15) * 0x2C1B3C6Du;
  h = (h ^ h >> 12) * 0x297A2D39u;
  return (h ^ h >> 15) / 4294967296.0;
}

// Noise that goes evenly from place to place, from 0 to 1.
double Smooth(double x, double y, int seed) {
  const double left = std::floor(x);
  const double top = std::floor(y);
  const auto ease = [](double t) { return t * t * (3 - 2 * t); };
  const double u = ease(x - left);
  const double v = ease(y - top);
  const auto at = [&](int dx, int dy) {
    return Random(static_cast<int>(left) + dx, static_cast<int>(top) + dy, seed);
  };
  return (at(0, 0) * (1 - u) + at(1, 0) * u) * (1 - v) + (at(0, 1) * (1 - u) + at(1, 1) * u) * v;
}

double Fractal(double x, double y, int seed) {
  double sum = 0;
  for (int octave = 0; octave < 6; ++octave)
    sum += Smooth(x * (1 << octave), y * (1 << octave), seed + octave) / (2 << octave);
  return sum;
}

template <class F>
void Paint(gdImageStruct* image, F color) {
  for (int y = 0; y < gdImageSY(image); ++y) {
    for (int x = 0; x < gdImageSX(image); ++x) image->tpixels[y][x] = color(x, y);
  }
}

void Write(gdImageStruct* image, int x, int y, const std::string& text, int color) {
  gdImageString(image, gdFontGetSmall(), x, y, reinterpret_cast<unsigned char*>(const_cast<char*>(text.c_str())),
                color);
}

const char* const kLines[] = {"$ make check",
                              "  CXX  reader.o",
                              "  CXX  writer.o",
                              "  CXX  document.o",
                              "  LINK gif",
                              "[  OK  ] reads a file",
                              "[  OK  ] writes what it read",
                              "[  OK  ] keeps colours",
                              "[ FAIL ] finds the end: 17 is not 18",
                              "$ git diff --stat",
                              " reader.cpp | 4 ++--",
                              " 1 file changed, 2 insertions(+), 2 deletions(-)"};

// A terminal: lines appear, then all moves up.
void Terminal(gdImageStruct* image, int frame) {
  gdImageFilledRectangle(image, 0, 0, 480, 270, Rgb(24, 26, 34));
  const int shown = 4 + frame / 2;
  const int first = std::max(0, shown - 19);
  for (int i = first; i < shown; ++i) {
    const std::string line = kLines[i * 7 % 12];
    const int color = line[0] == '$' ? Rgb(120, 220, 140) : line[0] == '[' ? Rgb(230, 200, 110) : Rgb(200, 204, 214);
    const bool typing = i == shown - 1 && frame % 2 == 0;
    Write(image, 6, 4 + (i - first) * 14, typing ? line.substr(0, line.size() / 2) : line, color);
  }
}

// A desktop: a pointer goes over windows, and a menu opens.
void Desktop(gdImageStruct* image, int frame) {
  Paint(image, [](int x, int y) { return Rgb(40 + y / 4.0, 70 + x / 8.0, 130 + y / 3.0); });
  gdImageFilledRectangle(image, 40, 30, 330, 220, Rgb(246, 246, 244));
  gdImageFilledRectangle(image, 40, 30, 330, 46, Rgb(70, 74, 86));
  Write(image, 48, 31, "Frames of an animation", Rgb(240, 240, 240));
  for (int i = 0; i < 11; ++i) Write(image, 50, 54 + i * 14, kLines[i], Rgb(40, 40, 48));
  if (frame > 12 && frame < 34) {
    gdImageFilledRectangle(image, 120, 60, 220, 150, Rgb(255, 255, 255));
    gdImageRectangle(image, 120, 60, 220, 150, Rgb(150, 150, 156));
    const int chosen = (frame - 12) / 4;
    for (int i = 0; i < 6; ++i) {
      if (i == chosen) gdImageFilledRectangle(image, 121, 62 + i * 14, 219, 75 + i * 14, Rgb(60, 120, 220));
      Write(image, 126, 62 + i * 14, kLines[i + 1], i == chosen ? Rgb(255, 255, 255) : Rgb(40, 40, 48));
    }
  }
  const int x = 60 + frame * 5;
  const int y = 200 - static_cast<int>(90 * std::sin(frame * 0.08));
  gdPoint pointer[] = {{x, y}, {x, y + 15}, {x + 4, y + 11}, {x + 10, y + 10}};
  gdImageFilledPolygon(image, pointer, 4, Rgb(0, 0, 0));
  gdImagePolygon(image, pointer, 4, Rgb(255, 255, 255));
}

// A gradient that stands still behind a ball.
void StillGradient(gdImageStruct* image, int frame) {
  const double cx = 160 + 100 * std::sin(frame * 0.157);
  const double cy = 100 + 60 * std::cos(frame * 0.157);
  Paint(image, [&](int x, int y) {
    const double d = std::hypot(x - cx, y - cy) / 30;
    if (d < 1) return Rgb(255 - 90 * d * d, 190 - 150 * d * d, 60);
    return Rgb(30 + x * 0.4, 40 + y * 0.6, 160 - x * 0.2 + y * 0.2);
  });
}

// Waves of colour, everywhere at once.
void MovingGradient(gdImageStruct* image, int frame) {
  const double t = frame * 0.157;
  Paint(image, [&](int x, int y) {
    const double v = std::sin(x * 0.02 + t) + std::sin(y * 0.03 - t) + std::sin((x + y) * 0.015 + 2 * t);
    return Rgb(128 + 40 * v, 128 + 40 * std::sin(v * 1.5 + 1), 150 - 35 * v);
  });
}

// Noise that stands still behind a square.
void StillNoise(gdImageStruct* image, int frame) {
  const int left = 10 + frame * 5;
  const int top = 60 + frame * 37 % 40;
  Paint(image, [&](int x, int y) {
    if (x >= left && x < left + 50 && y >= top && y < top + 50) return Rgb(220, 60, 50);
    const double grey = 16 * std::floor(16 * Random(x, y));
    return Rgb(grey, grey, grey);
  });
}

// A set without an aerial: noise in a frame.
void MovingNoise(gdImageStruct* image, int frame) {
  Paint(image, [&](int x, int y) {
    if (std::abs(x - 120) > 90 || std::abs(y - 80) > 60) return Rgb(90 + x / 8, 70, 50);
    const double grey = 32 * std::floor(8 * Random(x, y, frame + 1));
    return Rgb(grey, grey, grey);
  });
}

int CardColor(int x, int y) {
  static const int kBars[] = {0xFFFFFF, 0xFFFF00, 0x00FFFF, 0x00FF00, 0xFF00FF, 0xFF0000, 0x0000FF, 0x000000};
  if (std::hypot(x - 160, y - 100) < 70) {
    if (y < 110) return kBars[std::clamp((x - 90) / 18, 0, 7)];
    const double grey = 16 * std::floor((x - 90) / 9.0);
    return y < 135 ? Rgb(grey, grey, grey) : x / (1 + (y - 130) / 8) % 2 ? 0xFFFFFF : 0;
  }
  return x % 20 == 0 || y % 20 == 0 ? 0xE0E0E0 : 0x606468;
}

// A test card with a clock hand and a counter.
void StillCard(gdImageStruct* image, int frame) {
  Paint(image, [](int x, int y) { return CardColor(x, y); });
  gdImageSetThickness(image, 5);
  gdImageLine(image, 160, 100, 160 + static_cast<int>(64 * std::sin(frame * 0.157)),
              100 - static_cast<int>(64 * std::cos(frame * 0.157)), 0xFF8000);
  gdImageFilledRectangle(image, 4, 180, 70, 196, 0);
  Write(image, 8, 182, "frame " + std::to_string(frame), 0xFFFFFF);
}

// A test card that moves aslant.
void MovingCard(gdImageStruct* image, int frame) {
  Paint(image, [&](int x, int y) { return CardColor((x + frame * 3) % 320, (y + frame * 2) % 200); });
}

double CloudLight(double x, double y) { return Fractal(x / 90, y / 60, 11); }

// A landscape as from a moving train, with light and film grain.
void Landscape(gdImageStruct* image, int frame) {
  const double far = frame * 1.5;
  const double near = frame * 6.0;
  std::vector<double> hills;
  std::vector<double> trees;
  for (int x = 0; x < 480; ++x) {
    hills.push_back(105 + 80 * Fractal((x + far) / 220, 3, 5));
    trees.push_back(170 + 70 * Fractal((x + near) / 90, 7, 9));
  }
  Paint(image, [&](int x, int y) {
    const double grain = 7 * (Random(x, y, frame + 100) - 0.5);
    const auto at = static_cast<size_t>(x);
    if (y < hills[at]) {
      const double cloud = std::max(0.0, CloudLight(x + far * 0.3, y) - 0.42) * 380;
      return Rgb(110 + y * 0.5 + cloud + grain, 150 + y * 0.3 + cloud * 0.8 + grain,
                 215 - y * 0.1 + cloud * 0.3 + grain);
    }
    if (y < trees[at]) {
      const double light = Fractal((x + far) / 35, y / 18.0, 21);
      return Rgb(60 + 90 * light + grain, 85 + 95 * light + grain, 50 + 40 * light + grain);
    }
    const double leaf = Fractal((x + near) / 14, y / 9.0, 31);
    return Rgb(20 + 90 * leaf * leaf + grain, 35 + 120 * leaf * leaf + grain, 18 + 40 * leaf + grain);
  });
}

// A face that speaks, before a wall that stands still; the camera is noisy only where it is dark.
void Portrait(gdImageStruct* image, int frame) {
  const double nod = 4 * std::sin(frame * 0.21);
  const double mouth = 5 + 4 * std::sin(frame * 0.9);
  Paint(image, [&](int x, int y) {
    const double u = (x - 160) / 62.0;
    const double v = (y - 105 - nod) / 80.0;
    const double d = u * u + v * v;
    if (d < 1) {
      const double light = 0.55 + 0.45 * std::sqrt(1 - d) - 0.22 * u;
      const double skin = 0.9 + 0.2 * Fractal(x / 9.0, (y - nod) / 9.0, 41);
      const bool eye = std::hypot(std::abs(x - 160) - 24, (y - 88 - nod) * 1.6) < 8;
      const bool lips = std::hypot((x - 160) / 24.0, (y - 145 - nod) / mouth) < 1;
      if (eye) return Rgb(40, 30, 30);
      if (lips) return Rgb(120 * light, 30, 40);
      return Rgb(235 * light * skin, 180 * light * skin, 150 * light * skin);
    }
    const double wall = 60 + 90 * Fractal(x / 70.0, y / 70.0, 51) - y * 0.15;
    return Rgb(wall * 0.8, wall * 0.9, wall * 1.1);
  });
}

// A ball that jumps over nothing: all else is transparent.
void Sprite(gdImageStruct* image, int frame) {
  gdImageSaveAlpha(image, 1);
  const double cx = 20 + frame * 4.0;
  const double cy = 100 - std::abs(70 * std::sin(frame * 0.26));
  Paint(image, [&](int x, int y) {
    const double d = std::hypot(x - cx, y - cy) / 20;
    if (d < 1) return Rgb(80 + 150 * (1 - d), 40 + 60 * (1 - d) + (static_cast<int>(x - cx + 40) / 8 % 2) * 60, 180);
    const double shadow = std::hypot((x - cx) / 22, (y - 124) / 5.0);
    return shadow < 1 ? Rgb(60, 60, 64) : gdTrueColorAlpha(0, 0, 0, gdAlphaTransparent);
  });
}

const struct {
  const char* name;
  int width, height, frames;
  void (*draw)(gdImageStruct*, int frame);
} kAnimations[] = {
    {"terminal", 480, 270, 60, Terminal},
    {"desktop", 400, 250, 48, Desktop},
    {"still_gradient", 320, 200, 40, StillGradient},
    {"moving_gradient", 320, 200, 40, MovingGradient},
    {"still_noise", 320, 200, 40, StillNoise},
    {"moving_noise", 240, 160, 20, MovingNoise},
    {"still_card", 320, 200, 40, StillCard},
    {"moving_card", 320, 200, 40, MovingCard},
    {"landscape", 480, 270, 60, Landscape},
    {"portrait", 320, 200, 40, Portrait},
    {"sprite", 200, 140, 40, Sprite},
};

bool Save(gdImageStruct* image, const std::string& path) {
  std::FILE* file = std::fopen(path.c_str(), "wb");
  if (file == nullptr) return false;
  gdImagePngEx(image, file, 1);
  return std::fclose(file) == 0;
}

bool Wanted(const char* name, int argc, char** argv) {
  for (int i = 2; i < argc; ++i) {
    if (std::strcmp(argv[i], name) == 0) return true;
  }
  return argc == 2;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "Usage: make_animations FOLDER [NAME...]\n");
    return 2;
  }
  for (const auto& animation : kAnimations) {
    if (!Wanted(animation.name, argc, argv)) continue;
    const std::string folder = std::string(argv[1]) + "/" + animation.name;
    std::filesystem::create_directories(folder);
    for (int frame = 0; frame < animation.frames; ++frame) {
      const Image image = NewImage(animation.width, animation.height);
      animation.draw(image.get(), frame);
      const std::string number = std::to_string(1000 + frame).substr(1);
      if (!Save(image.get(), folder + "/" + number + ".png")) return std::perror(folder.c_str()), 1;
    }
  }
  return 0;
}
