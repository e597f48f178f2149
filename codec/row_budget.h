#pragma once

// What a document may spend on the pixel rows of its images, so that a few bytes cannot claim gigabytes.
//
// An image's rows cost width x height bytes and 8 x height for their pointers. A document may spend 64 MiB plus
// 16,384 bytes for each byte of its stream. Sound data never needs more: a code of 12 bits stands for at most 4,094
// pixels, and an image one pixel wide takes 9 bytes for each, so a byte of data fills about 9,700 bytes at most.

#include <cstdint>

#include "codec/byte_stream.h"

class RowBudget {
 public:
  // The stream that the document is read from; borrowed.
  explicit RowBudget(const MyFILE* stream) : stream_(stream) {}

  // Takes the cost of an image of 0 to 65535 pixels each way. False, and nothing taken, when there is not so much
  // left.
  bool Spend(int32_t width, int32_t height);

 private:
  const MyFILE* stream_;
  int64_t spent_ = 0;  // bytes
};
