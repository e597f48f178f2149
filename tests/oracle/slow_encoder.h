#pragma once

// The encoder's algorithm step by step, as plainly as it can be said: the judge of the one that is used.

#include <cstdint>
#include <vector>

using Bytes = std::vector<uint8_t>;

// The image data of rows in file order, from the code size to the empty sub-block. Null rows are empty
// vectors.
Bytes SlowImageData(int code_size, const std::vector<Bytes>& rows);
