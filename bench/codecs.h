#pragma once

// The codecs that are measured, ours and those that people use: whole documents from and to memory, made and
// released.

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "bench/sample_images.h"

using Bytes = std::vector<uint8_t>;
using Work = std::function<void()>;

struct Codec {
  const char* name;
  bool all_frames;                           // false: it reads and writes the first image only
  Work (*decode)(const Bytes& file);         // the work of reading the file, which must outlive it
  Work (*encode)(const SampleImage& image);  // the work of writing the image; null when it cannot write
};

// Ours first.
std::span<const Codec> Codecs();
