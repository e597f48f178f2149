#pragma once

// The codecs that are measured, ours and those that people use: whole documents from and to memory, made and
// released.

#include <functional>
#include <span>

#include "bench/samples.h"

using Work = std::function<void()>;

struct Codec {
  const char* name;
  bool all_images;                    // false: it reads and writes the first image only
  Work (*decode)(const Bytes& file);  // the work of reading the file, which must outlive it
  Work (*encode)(const Gif* gif);     // the work of writing the document, which must outlive it; null: cannot write
};

// Ours first, then giflib.
std::span<const Codec> Codecs();
