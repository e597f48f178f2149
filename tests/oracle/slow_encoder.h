#pragma once

// The encoder code by code and bit by bit, with strings in a map: slow, obvious, and independent of the product's. It
// judges the product's bytes.

#include <cstdint>
#include <vector>

namespace oracle {

// An image's data behind its minimum code size, 2 to 11: sub-blocks with their terminator. A pixel too large for the
// code size is merged into the bits whole, what exceeds its width falls onto the codes behind it.
std::vector<uint8_t> EncodeImage(int32_t code_size, const std::vector<uint8_t>& pixels);

}  // namespace oracle
