#pragma once

// Images that benchmarks work on, made the same way in every run.

#include <cstdint>
#include <string>
#include <vector>

struct SampleImage {
  std::string name;
  int32_t width, height;
  int32_t depth;                // bits per pixel; the colour table has 2 to this power entries
  std::vector<uint8_t> pixels;  // top row first
  int32_t frames = 1;           // images in the file; each is the same picture shifted
};

std::vector<SampleImage> SampleImages();

// The image as a GIF file, written by an independent encoder.
std::vector<uint8_t> EncodeSample(const SampleImage& image);
