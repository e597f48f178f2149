#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace host {

// Four numbers that are reckoned with at once.
using Lanes = float __attribute__((vector_size(16)));
using LaneNumbers = int32_t __attribute__((vector_size(16)));
constexpr size_t kLanes = 4;

inline Lanes LanesOf(float number) { return Lanes{} + number; }
inline Lanes LanesAt(const float* at) {
  Lanes lanes;
  std::memcpy(&lanes, at, sizeof lanes);
  return lanes;
}

}  // namespace host
