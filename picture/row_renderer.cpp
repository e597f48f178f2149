#include "picture/row_renderer.h"

#include <cstring>

void RowRenderer::Render(const uint8_t* indexes, int64_t count, uint8_t* pixels) const {
  for (int64_t x = 0; x < count; ++x) {
    std::memcpy(pixels + 4 * x, &table_[indexes ? indexes[x] : 0], 4);
  }
}
