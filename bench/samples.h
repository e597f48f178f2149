#pragma once

// The GIF files that benchmarks work on: made the same way in every run, or those of a folder.

#include <cstdint>
#include <string>
#include <vector>

#include "codec/document.h"

using Bytes = std::vector<uint8_t>;

// What is to be reached, as a multiple of giflib's speed; 0: nothing was set.
struct Goals {
  double decode = 0, encode = 0, first_open = 0;
};

struct Sample {
  std::string name;
  Bytes file;
  Goals goals;
};

std::vector<Sample> MadeSamples();

// Every file of the folder whose name ends in ".gif", without goals.
std::vector<Sample> SamplesOf(const std::string& folder);

// A file's document, for whoever releases it with `DeleteGif`.
Gif* ReadSample(const Bytes& file);

int64_t AllPixels(const Gif* gif);
const GifPicture* FirstPicture(const Gif* gif);  // null without one

// The picture's pixels, top row first.
Bytes PixelsOf(const GifPicture* picture);
