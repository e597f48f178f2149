#pragma once

// What the tree of a GIF document cannot tell about the bytes that it came from: where each block stands, what the
// data of each image consists of, and what is wrong or odd.

#include <cstdint>
#include <span>
#include <vector>

#include "scan/findings.h"

// A piece of the file. `length` is what is there of it, 0 where there is none.
struct Extent {
  int64_t offset;
  int64_t length;
};

struct ImageScan {
  int32_t width;             // pixels, as the descriptor says
  int32_t height;            //
  int32_t code_size;         // the minimum code size as it stands in the file; -1: the file ends before it
  Extent table;              // the local colour table
  Extent data;               // from the first sub-block's length to the empty sub-block
  int64_t sub_blocks;        // the empty one not counted
  int64_t compressed_bytes;  // in sub-blocks
  int64_t codes;             // up to the first that is an end code or means nothing
  int64_t clear_codes;       // among them
  int64_t pixels;            // that their strings hold
};

struct BlockScan {
  int64_t offset;  // of its introducer
  int64_t length;  // up to the next one
  int32_t label;   // of an extension; -1: an image
  int32_t image;   // its place in `images`; -1: an extension
};

struct FileScan {
  int64_t size;                   // of the file
  Extent screen;                  // the logical screen descriptor
  Extent table;                   // the global colour table
  int64_t trailer;                // its offset; -1: none
  std::vector<BlockScan> blocks;  // the same as a document read from these bytes has
  std::vector<ImageScan> images;
  std::vector<Finding> findings;  // in the order of their blocks
};

// Throws std::bad_alloc.
FileScan ScanFile(std::span<const uint8_t> bytes);
