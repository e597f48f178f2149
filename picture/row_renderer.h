#pragma once

// Turns rows of colour indexes into rows of 32-bit pixels.

#include <cstdint>
#include <span>

#include "picture/row_kernels.h"

class RowRenderer {
 public:
  // Chooses the fastest kernel that this processor and this table allow.
  explicit RowRenderer(const PixelTable& table);

  // Writes `count` pixels, 4 bytes each, to `pixels`, which need not be aligned.
  void Render(const uint8_t* indexes, int64_t count, uint8_t* pixels) const;

  // The same for rows of `count` pixels with indexes, one after the other: small pictures are faster so.
  void RenderRows(std::span<const uint8_t* const> rows, int64_t count, uint8_t* const* pixels) const;

 private:
  RowLookup lookup_;
  const RowKernel* kernel_ = nullptr;
};
