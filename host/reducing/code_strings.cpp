#include "host/reducing/code_strings.h"

#include <algorithm>

namespace host {

CodeStrings::CodeStrings(int code_size) : code_size_(code_size), table_(kSlots, kEmpty) {
  width_ = code_size + 1;
  limit_ = 1u << width_;
  next_code_ = roots() + 2;
  bits_ = width_;  // the clear code that each image begins with
}

void CodeStrings::Clear() {
  bits_ += width_;
  width_ = code_size_ + 1;
  limit_ = 1u << width_;
  next_code_ = roots() + 2;
  std::fill(table_.begin(), table_.end(), kEmpty);
}

int64_t CountBytes(std::span<const uint8_t> pixels, int code_size, int64_t enough) {
  if (pixels.empty()) return 2;
  CodeStrings strings(code_size);
  constexpr size_t kBetweenLooks = 4096;
  const int64_t most_bits = enough > (int64_t{1} << 50) ? INT64_MAX : enough * 8;
  uint32_t prefix = pixels[0];
  for (size_t i = 1; i < pixels.size();) {
    const size_t end = std::min(pixels.size(), i + kBetweenLooks);
    for (; i < end; ++i) prefix = strings.Follow(prefix, pixels[i]);
    if (strings.bits() > most_bits) break;
  }
  const int64_t bytes = (strings.BitsAtEnd() + 7) / 8;
  return 2 + bytes + (bytes + 254) / 255;
}

}  // namespace host
