#include "picture/row_renderer.h"

#include <algorithm>

RowRenderer::RowRenderer(const PixelTable& table) {
  std::copy(table.begin(), table.end(), lookup_.pixels.begin());  // an assignment takes g++ longer than all the rest
  for (const RowKernel& kernel : RowKernels()) {
    kernel_ = &kernel;
    if (kernel.prepare(lookup_)) break;
  }
}

void RowRenderer::Render(const uint8_t* indexes, int64_t count, uint8_t* pixels) const {
  if (count >= kernel_->step) {
    kernel_->render(lookup_, indexes, count, pixels);
  } else {
    RenderPlain(lookup_, indexes, count, pixels);
  }
}

void RowRenderer::RenderRows(std::span<const uint8_t* const> rows, int64_t count, uint8_t* const* pixels) const {
  const bool narrow = count > 0 && count <= kernel_->step;
  if (narrow && kernel_->render_narrow) return kernel_->render_narrow(lookup_, rows, count, pixels);
  for (size_t y = 0; y < rows.size(); ++y) Render(rows[y], count, pixels[y]);
}
