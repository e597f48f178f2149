#pragma once

// The inner loops that look colour indexes up. All of them give the same pixels; they differ in speed and in
// what they ask of the processor and the table.

#include <array>
#include <cstdint>
#include <span>

// One ready pixel, in the picture's format, for each index.
using PixelTable = std::array<uint32_t, 256>;

// The table, and whatever a kernel made of it.
struct RowLookup {
  PixelTable pixels;
  // The table cut into four: byte `b` of the pixel that belongs to an index.
  alignas(64) std::array<std::array<uint8_t, 256>, 4> planes;
  // For tables in which all pixels but up to 16 neighbours are alike: where those 16 begin (they may run over
  // the end of the table, to its front), and the pixel of all others. The planes hold just those 16,
  // exclusive-or `others`.
  uint8_t first;
  uint32_t others;
};

struct RowKernel {
  const char* name;
  int64_t step;  // the fewest pixels that `render` takes
  // Fills in what `render` needs besides the pixels; false when the processor or the table do not suit.
  bool (*prepare)(RowLookup& lookup);
  void (*render)(const RowLookup& lookup, const uint8_t* indexes, int64_t count, uint8_t* pixels);
  // The same for rows of 1 to `step` pixels, one row after the other; null: there is nothing faster for those.
  void (*render_narrow)(const RowLookup& lookup, std::span<const uint8_t* const> rows, int64_t count,
                        uint8_t* const* pixels) = nullptr;
};

// Fastest first. The last one suits every processor and every table.
std::span<const RowKernel> RowKernels();

// That last one's loop; takes any number of pixels.
void RenderPlain(const RowLookup& lookup, const uint8_t* indexes, int64_t count, uint8_t* pixels);
