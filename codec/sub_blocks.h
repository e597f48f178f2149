#pragma once

// Data sub-blocks (GIF89a, sections 15 and 16): a length byte and as many bytes, up to an empty one.

#include <cstdint>

#include "codec/byte_stream.h"
#include "codec/format.h"

// Begins the next one: the number of its bytes, which follow. 0 at the empty one and at the stream's end.
int32_t BeginSubBlock(MyFILE* stream);

// Reads the next one's bytes, at most `kMaxSubBlock`. The result is their number.
int32_t ReadSubBlock(MyFILE* stream, uint8_t* bytes);

// Reads the rest of a sequence, the empty one included, and drops it.
void SkipSubBlocks(MyFILE* stream);

// Writes `length` bytes as sub-blocks, the last of which may be shorter than others; one of no bytes when `length` is
// below 1.
void WriteSubBlocks(MyFILE* stream, const uint8_t* bytes, int64_t length);

// Writes the empty one that ends a sequence.
void EndSubBlocks(MyFILE* stream);
