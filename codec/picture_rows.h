#pragma once

// Where the pixel rows of an image lie, and reading them whatever there is of them.

#include <cstdint>

#include "codec/document.h"
#include "codec/memory.h"

// The row of the image that stands at position `index` (0 to `height` - 1) in the file: the four passes of GIF89a,
// appendix E, when interlaced. And back.
int32_t DisplayRow(int32_t height, bool interlaced, int32_t index);
int32_t FilePosition(int32_t height, bool interlaced, int32_t row);

// Gives the rows of an image whole. The picture is borrowed and must not change meanwhile.
class RowReader {
 public:
  explicit RowReader(const GifPicture* picture) : picture_(picture) {}

  // The `width` pixels of a row, counted from the top one; good until the next call. They stand where the picture
  // keeps them or, of a row that got fewer, completed by zeros in a buffer of the reader's own. Null for a row that
  // the picture does not have or that has no width, and without memory for the buffer.
  const uint8_t* Row(int64_t row);

  // Sees to the buffer if any row needs it: each row that there is can be read then. False without memory.
  bool Prepare();

  // Whether the row given last stays good for as long as the picture does.
  bool RowStays() const { return !in_buffer_; }

 private:
  const GifPicture* picture_;
  Owned<uint8_t> buffer_;  // zeros but for its first `used_` bytes
  int32_t used_ = 0;
  bool in_buffer_ = false;  // the row given last
};

// --- Keeping them ----------------------------------------------------------------------------------------------

// The pixels that a row got.
struct RowPixels {
  const uint8_t* pixels;
  int32_t length;
};

// Adds the row at the next position to a tail. `for_good`: all rows to come are like it. False without memory.
bool AddRow(GifRowTail* tail, int32_t position, RowPixels row, bool for_good = false);

// Gives back the memory that was kept for rows to come.
void TrimTail(GifRowTail* tail);
