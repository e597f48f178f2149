// Chooses 255 colours for the pictures of each folder of PNG files three ways, for each picture and for all of them
// together, and tells how near the pictures come (PSNR, dB):
//
//   compare_quantisers FOLDER...

#include <gd.h>
#include <libimagequant.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "host/reducing/canvas.h"
#include "host/reducing/nearest_color.h"
#include "host/reducing/quantiser.h"

namespace {

constexpr int kColors = 255;

using Pixels = std::vector<uint32_t>;  // of a picture; what is transparent is left out
using Pictures = std::vector<Pixels>;
using Colors = std::vector<uint32_t>;

Pixels Load(const std::string& path) {
  std::FILE* file = std::fopen(path.c_str(), "rb");
  gdImagePtr image = file == nullptr ? nullptr : gdImageCreateFromPng(file);
  if (image == nullptr) std::perror(path.c_str()), std::exit(1);
  std::fclose(file);
  Pixels pixels;
  for (int y = 0; y < gdImageSY(image); ++y) {
    for (int x = 0; x < gdImageSX(image); ++x) {
      const int color = gdImageGetTrueColorPixel(image, x, y);
      if (gdTrueColorGetAlpha(color) < 64) pixels.push_back(static_cast<uint32_t>(color) & 0xFFFFFF);
    }
  }
  gdImageDestroy(image);
  return pixels;
}

Colors Ours(const Pictures& pictures) {
  host::Quantiser quantiser;
  for (const Pixels& pixels : pictures) quantiser.AddRow(pixels.data(), pixels.size());
  return quantiser.Choose(kColors);
}

Colors Libimagequant(const Pictures& pictures) {
  liq_attr* attributes = liq_attr_create();
  liq_set_max_colors(attributes, kColors);
  liq_histogram* histogram = liq_histogram_create(attributes);
  for (const Pixels& pixels : pictures) {
    std::vector<liq_color> colors;
    for (const uint32_t rgb : pixels) {
      colors.push_back({static_cast<unsigned char>(rgb >> 16), static_cast<unsigned char>(rgb >> 8),
                        static_cast<unsigned char>(rgb), 255});
    }
    liq_image* image =
        liq_image_create_rgba(attributes, colors.data(), static_cast<int>(colors.size()), 1, 0 /* sRGB */);
    liq_histogram_add_image(histogram, attributes, image);
    liq_image_destroy(image);
  }
  liq_result* result = nullptr;
  Colors colors;
  if (liq_histogram_quantize(histogram, attributes, &result) == LIQ_OK) {
    const liq_palette* palette = liq_get_palette(result);
    for (unsigned i = 0; i < palette->count; ++i) {
      const liq_color& color = palette->entries[i];
      colors.push_back(uint32_t{color.r} << 16 | uint32_t{color.g} << 8 | color.b);
    }
    liq_result_destroy(result);
  }
  liq_histogram_destroy(histogram);
  liq_attr_destroy(attributes);
  return colors;
}

Colors NeuQuant(const Pictures& pictures) {
  int width = 0;
  for (const Pixels& pixels : pictures) width = std::max(width, static_cast<int>(pixels.size()));
  gdImagePtr image = gdImageCreateTrueColor(width, static_cast<int>(pictures.size()));
  for (size_t y = 0; y < pictures.size(); ++y) {
    for (size_t x = 0; x < static_cast<size_t>(width); ++x) {
      image->tpixels[y][x] = static_cast<int>(pictures[y][x % pictures[y].size()]);
    }
  }
  constexpr int kBest = 1;
  gdImageTrueColorToPaletteSetMethod(image, GD_QUANT_NEUQUANT, kBest);
  gdImageTrueColorToPalette(image, 0, kColors);
  Colors colors;
  for (int i = 0; i < gdImageColorsTotal(image); ++i) {
    colors.push_back(static_cast<uint32_t>(image->red[i] << 16 | image->green[i] << 8 | image->blue[i]));
  }
  gdImageDestroy(image);
  return colors;
}

struct Score {
  double error = 0;
  double values = 0;
  double seconds = 0;

  void Add(const Pictures& pictures, const std::function<Colors(const Pictures&)>& choose) {
    const std::clock_t start = std::clock();
    const Colors colors = choose(pictures);
    seconds += static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    host::NearestColor nearest(colors);
    for (const Pixels& pixels : pictures) {
      for (const uint32_t rgb : pixels) error += host::Distance(rgb, colors[static_cast<size_t>(nearest.Find(rgb))]);
      values += 3.0 * static_cast<double>(pixels.size());
    }
  }
  std::string text() const {
    if (error == 0) return "exact";
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%.2f", 10 * std::log10(255 * 255 * values / error));
    return buffer;
  }
};

}  // namespace

int main(int argc, char** argv) {
  const std::function<Colors(const Pictures&)> ways[] = {Ours, Libimagequant, NeuQuant};
  double seconds[2][3] = {};
  std::printf(
      "| | own tables: ours | libimagequant | NeuQuant | one table: ours | libimagequant | NeuQuant "
      "|\n|---|---|---|---|---|---|---|\n");
  for (int i = 1; i < argc; ++i) {
    std::vector<std::string> paths;
    for (const auto& entry : std::filesystem::directory_iterator(argv[i])) paths.push_back(entry.path());
    std::sort(paths.begin(), paths.end());
    Pictures all;
    for (const std::string& path : paths) all.push_back(Load(path));
    std::printf("| %s |", std::filesystem::path(argv[i]).filename().c_str());
    for (const bool together : {false, true}) {
      for (size_t way = 0; way < 3; ++way) {
        Score score;
        if (together) score.Add(all, ways[way]);
        for (size_t k = 0; !together && k < all.size(); ++k) score.Add({all[k]}, ways[way]);
        std::printf(" %s |", score.text().c_str());
        seconds[together ? 1 : 0][way] += score.seconds;
      }
    }
    std::printf("\n");
    std::fflush(stdout);
  }
  std::printf("| seconds |");
  for (const auto& row : seconds) {
    for (const double s : row) std::printf(" %.1f |", s);
  }
  std::printf("\n");
}
