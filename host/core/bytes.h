#pragma once

#include <cstddef>
#include <cstring>

namespace host {

// Whether all of the bytes are `wanted`: the first is, and each is as the one before it.
inline bool AllAre(const std::byte* bytes, size_t count, std::byte wanted) {
  return count == 0 || (bytes[0] == wanted && std::memcmp(bytes, bytes + 1, count - 1) == 0);
}

}  // namespace host
