// Draws the animation that the examples and tests use and writes it with giflib:
//
//   make_gifs examples/gifs/lighthouse.gif
//
// A lighthouse at night. The first frame is interlaced and fills the screen; each later one holds only the rectangle
// that changed, with a transparent index where a pixel did not.

#include <gd.h>
#include <gif_lib.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

constexpr int kWidth = 160;
constexpr int kHeight = 120;
constexpr int kFrames = 16;
constexpr int kColours = 63;  // the 64th is the transparent one
constexpr int kTransparent = 63;
constexpr int kDelay = 9;  // hundredths of a second
constexpr int kLampX = 112;
constexpr int kLampY = 38;

using Indexes = std::vector<uint8_t>;

struct Rectangle {
  int left, top, width, height;
};

void DrawSky(gdImagePtr image) {
  for (int y = 0; y < kHeight; ++y) {
    const double t = std::min(1.0, y / 84.0);
    const int colour = gdTrueColor(int(12 + 48 * t * t), int(16 + 34 * t), int(52 + 54 * t));
    gdImageLine(image, 0, y, kWidth - 1, y, colour);
  }
  uint32_t seed = 7;
  for (int i = 0; i < 42; ++i) {
    seed = seed * 1664525 + 1013904223;
    const int x = int(seed >> 16) % kWidth;
    const int y = int(seed >> 8 & 0xFF) * 70 / 256;
    gdImageSetPixel(image, x, y, gdTrueColor(190, 200, 225));
  }
  gdImageFilledEllipse(image, 30, 24, 17, 17, gdTrueColor(236, 230, 200));
  gdImageFilledEllipse(image, 34, 22, 15, 15, gdTrueColor(14, 20, 58));
}

// The beam turns; its length on the picture tells whether it points at us or away.
void DrawBeam(gdImagePtr image, int frame) {
  const double angle = frame * 2 * M_PI / kFrames;
  for (const double side : {0.0, M_PI}) {
    const double reach = 150 * std::cos(angle + side);
    const double spread = 7 + 9 * std::abs(std::sin(angle + side));
    for (int layer = 0; layer < 3; ++layer) {
      const double s = spread * (1.0 - layer * 0.28);
      gdPoint beam[] = {{kLampX, kLampY - 1},
                        {int(kLampX + reach), int(kLampY - 6 - s)},
                        {int(kLampX + reach), int(kLampY - 6 + s)},
                        {kLampX, kLampY + 1}};
      gdImageFilledPolygon(image, beam, 4, gdTrueColorAlpha(255, 240, 170, 108));
    }
  }
  const int glow = int(10 + 14 * std::abs(std::sin(angle)));
  gdImageFilledEllipse(image, kLampX, kLampY, glow, glow, gdTrueColorAlpha(255, 244, 190, 80));
}

void DrawLand(gdImagePtr image) {
  gdPoint rock[] = {{82, 100}, {94, 86}, {108, 80}, {124, 82}, {140, 92}, {152, 102}};
  gdImageFilledPolygon(image, rock, 6, gdTrueColor(38, 34, 42));
  for (int band = 0; band < 5; ++band) {
    const int top = 44 + band * 8;
    const int half = 5 + band / 2;
    gdImageFilledRectangle(image, kLampX - half, top, kLampX + half, top + 7,
                           band % 2 ? gdTrueColor(196, 52, 48) : gdTrueColor(226, 226, 220));
    gdImageFilledRectangle(image, kLampX + half - 2, top, kLampX + half, top + 7,
                           band % 2 ? gdTrueColor(132, 32, 36) : gdTrueColor(160, 162, 170));
  }
  gdImageFilledRectangle(image, kLampX - 7, 42, kLampX + 7, 44, gdTrueColor(60, 56, 66));
  gdImageFilledRectangle(image, kLampX - 4, 34, kLampX + 4, 41, gdTrueColor(255, 236, 150));
  gdPoint roof[] = {{kLampX - 6, 34}, {kLampX, 27}, {kLampX + 6, 34}};
  gdImageFilledPolygon(image, roof, 3, gdTrueColor(132, 32, 36));
}

void DrawSea(gdImagePtr image, int frame) {
  for (int y = 96; y < kHeight; ++y) {
    const double t = (y - 96) / 24.0;
    gdImageLine(image, 0, y, kWidth - 1, y, gdTrueColor(int(14 + 8 * t), int(40 - 14 * t), int(78 - 30 * t)));
  }
  const double phase = frame * 2 * M_PI / kFrames;
  for (int y = 99; y < kHeight; y += 4) {
    for (int x = 0; x < kWidth; ++x) {
      const double wave = std::sin(x * 0.19 + y * 1.7 + phase) + std::sin(x * 0.07 - phase * 2 + y);
      if (wave > 1.1) gdImageSetPixel(image, x, y, gdTrueColor(84, 118, 150));
    }
  }
}

gdImagePtr DrawFrame(int frame) {
  gdImagePtr image = gdImageCreateTrueColor(kWidth, kHeight);
  DrawSky(image);
  DrawBeam(image, frame);
  DrawLand(image);
  DrawSea(image, frame);
  return image;
}

// One palette for all frames, from a picture that holds every other one of them.
gdImagePtr MakePalette(const std::vector<gdImagePtr>& frames) {
  gdImagePtr all = gdImageCreateTrueColor(kWidth, kHeight * kFrames / 2);
  for (int i = 0; i < kFrames / 2; ++i) gdImageCopy(all, frames[i * 2], 0, i * kHeight, 0, 0, kWidth, kHeight);
  gdImageTrueColorToPalette(all, 0, kColours);
  return all;
}

Indexes Quantise(gdImagePtr frame, gdImagePtr palette) {
  Indexes indexes;
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x) {
      const int c = gdImageGetTrueColorPixel(frame, x, y);
      indexes.push_back(
          uint8_t(gdImageColorClosest(palette, gdTrueColorGetRed(c), gdTrueColorGetGreen(c), gdTrueColorGetBlue(c))));
    }
  }
  return indexes;
}

Rectangle Changed(const Indexes& before, const Indexes& after) {
  int left = kWidth, top = kHeight, right = -1, bottom = -1;
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x) {
      if (before[y * kWidth + x] == after[y * kWidth + x]) continue;
      left = std::min(left, x);
      right = std::max(right, x);
      top = std::min(top, y);
      bottom = std::max(bottom, y);
    }
  }
  return {left, top, right - left + 1, bottom - top + 1};
}

void Check(int result) {
  if (result == GIF_OK) return;
  std::fprintf(stderr, "giflib refused to write\n");
  std::exit(1);
}

void PutGraphicControl(GifFileType* gif, int disposal, int transparent) {
  GraphicsControlBlock control = {disposal, false, kDelay, transparent};
  GifByteType bytes[4];
  EGifGCBToExtension(&control, bytes);
  Check(EGifPutExtension(gif, GRAPHICS_EXT_FUNC_CODE, 4, bytes));
}

void PutRows(GifFileType* gif, const Indexes& now, const Indexes* before, const Rectangle& r, bool interlaced) {
  std::vector<GifPixelType> row(size_t(r.width));
  const auto put = [&](int y) {
    for (int x = 0; x < r.width; ++x) {
      const size_t at = size_t((r.top + y) * kWidth + r.left + x);
      row[size_t(x)] = before && (*before)[at] == now[at] ? uint8_t(kTransparent) : now[at];
    }
    Check(EGifPutLine(gif, row.data(), r.width));
  };
  if (!interlaced) {
    for (int y = 0; y < r.height; ++y) put(y);
    return;
  }
  for (const auto [first, step] : {std::array{0, 8}, {4, 8}, {2, 4}, {1, 2}}) {
    for (int y = first; y < r.height; y += step) put(y);
  }
}

void Write(const char* path, const std::vector<Indexes>& frames, gdImagePtr palette) {
  int error = 0;
  GifFileType* gif = EGifOpenFileName(path, false, &error);
  if (!gif) Check(GIF_ERROR);
  EGifSetGifVersion(gif, true);
  ColorMapObject* colours = GifMakeMapObject(64, nullptr);
  for (int i = 0; i < kColours; ++i) {
    colours->Colors[i] = {GifByteType(palette->red[i]), GifByteType(palette->green[i]),
                          GifByteType(palette->blue[i])};
  }
  Check(EGifPutScreenDesc(gif, kWidth, kHeight, 6, 0, colours));
  GifFreeMapObject(colours);

  const GifByteType forever[] = {1, 0, 0};
  Check(EGifPutExtensionLeader(gif, APPLICATION_EXT_FUNC_CODE));
  Check(EGifPutExtensionBlock(gif, 11, "NETSCAPE2.0"));
  Check(EGifPutExtensionBlock(gif, 3, forever));
  Check(EGifPutExtensionTrailer(gif));
  Check(EGifPutComment(gif, "A lighthouse at night, drawn by tools/make_gifs.cpp"));

  for (size_t i = 0; i < frames.size(); ++i) {
    const Indexes* before = i == 0 ? nullptr : &frames[i - 1];
    const Rectangle r = before ? Changed(*before, frames[i]) : Rectangle{0, 0, kWidth, kHeight};
    PutGraphicControl(gif, DISPOSE_DO_NOT, before ? kTransparent : NO_TRANSPARENT_COLOR);
    Check(EGifPutImageDesc(gif, r.left, r.top, r.width, r.height, !before, nullptr));
    PutRows(gif, frames[i], before, r, !before);
  }
  Check(EGifCloseFile(gif, &error));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "Usage: make_gifs FILE.gif\n");
    return 2;
  }
  std::vector<gdImagePtr> pictures;
  for (int i = 0; i < kFrames; ++i) pictures.push_back(DrawFrame(i));
  gdImagePtr palette = MakePalette(pictures);
  std::vector<Indexes> frames;
  for (gdImagePtr picture : pictures) {
    frames.push_back(Quantise(picture, palette));
    gdImageDestroy(picture);
  }
  Write(argv[1], frames, palette);
  gdImageDestroy(palette);
  return 0;
}
