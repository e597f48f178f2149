#include "picture/row_renderer.h"

#include <cstring>

RowRenderer::RowRenderer(const PixelTable& table) {
  lookup_.pixels = table;
  for (const RowKernel& kernel : RowKernels()) {
    kernel_ = &kernel;
    if (kernel.prepare(lookup_)) break;
  }
}

void RowRenderer::Render(const uint8_t* indexes, int64_t count, uint8_t* pixels) const {
  if (!indexes) {
    for (int64_t x = 0; x < count; ++x) std::memcpy(pixels + 4 * x, &lookup_.pixels[0], 4);
  } else if (count >= kernel_->step) {
    kernel_->render(lookup_, indexes, count, pixels);
  } else {
    RenderPlain(lookup_, indexes, count, pixels);
  }
}
