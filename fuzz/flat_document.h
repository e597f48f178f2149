#pragma once

// Documents as one run of bytes each, so that two of them can be compared: every field, palette entry, pixel and
// sub-block, in file order.

#include <cstdint>
#include <memory>
#include <vector>

#include "codec/document.h"

// In code of our own: a vector of plain bytes would share the fuzzing engine's, which the memory sanitizer cannot
// follow.
template <typename Item>
struct OwnAllocator : std::allocator<Item> {
  template <typename Other>
  struct rebind {  // NOLINT(readability-identifier-naming): so the library asks for it
    using other = OwnAllocator<Other>;
  };
};
using Bytes = std::vector<uint8_t, OwnAllocator<uint8_t>>;

// What must hold in any document read or assembled is checked on the way; what does not ends the program.
Bytes Flatten(const Gif* gif);

// The same for the document that a file holds, found without the product's reader and by the slow row decoder alone.
// At the end, how many of the bytes were read.
//
// Of an image of more than `kPixelsLookedAt` pixels these are some rows: the first, the last and others here and
// there.
Bytes FlattenByOracle(const Bytes& file);

// Makes images small in a file, once their rows have cost more than `limit` bytes.
void LimitImages(Bytes* file, int64_t limit);

// The document flattened by the product's reader. The memory that it takes must be in proportion to the file.
Bytes FlattenByReader(const Bytes& file);

// Ends the program, saying so, when two flat documents differ.
void ExpectEqual(const char* what, const Bytes& actual, const Bytes& expected);
