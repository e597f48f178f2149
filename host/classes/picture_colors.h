#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "host/host/host.h"
#include "host/host/memory_block.h"
#include "host/host/picture.h"

namespace host {

// Lists of colours travel as strings of four bytes each: 0xRRGGBB, lowest byte first.
std::vector<uint32_t> ColorsOf(const std::string& list);
std::string ListOf(std::span<const uint32_t> colors);

// The colours of a picture in order of appearance, masked pixels left out; one more than `most` stands for any number
// beyond.
std::vector<uint32_t> DistinctColors(const Picture& picture, size_t most);

// A byte for each pixel, row by row: the index of the nearest of at most 256 colours; `transparent`, unless it is
// negative, for pixels more than half transparent.
void NearestIndexes(const Picture& picture, std::span<const uint32_t> colors, int64_t transparent,
                    std::span<std::byte> to);

Ref<MemoryBlock> NewMemoryBlock(Host& host, size_t size);  // throws std::bad_alloc

}  // namespace host
