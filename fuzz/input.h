#pragma once

// A fuzzer's input as a source of choices. Zeros follow its last byte.

#include <cstddef>
#include <cstdint>
#include <cstdlib>

// Whether images may have up to a million pixels, as the environment's FUZZ_LARGE_IMAGES asks: inputs are slower
// then.
inline bool LargeImages() {
  static const bool large = std::getenv("FUZZ_LARGE_IMAGES") != nullptr;
  return large;
}

// Whether most inputs are to have small images, as FUZZ_SMALL_IMAGES asks: they are several times faster then.
inline bool SmallImages() {
  static const bool small = std::getenv("FUZZ_SMALL_IMAGES") != nullptr;
  return small;
}

class Input {
 public:
  Input(const uint8_t* data, size_t size) : next_(data), end_(data + size) {}

  bool empty() const { return next_ == end_; }
  uint8_t Byte() { return empty() ? uint8_t{0} : *next_++; }
  int32_t Word() {
    const int32_t low = Byte();
    return low | Byte() << 8;
  }
  int32_t Below(int32_t end) { return Byte() % end; }  // 0 to `end` - 1, at most 255
  bool Coin() { return Byte() & 1; }

 private:
  const uint8_t* next_;
  const uint8_t* end_;
};
