#pragma once

// A GIF document in memory: a tree of plain records, one `Gif` at its root.
//
// Every record, array and row is zero-filled when it is made and has exactly one owner; pointers own what they name.
// A null array goes with a count of 0. The whole tree is released by `DeleteGif`; trees built only in part are
// accepted as well. Bit fields of the descriptors are unpacked into plain integers, so that a document read and
// written again keeps its values. Sections are those of the GIF89a definition.

#include <cstddef>
#include <cstdint>

// One entry of a colour table. Script classes and records copy entries whole, as 32-bit words.
struct Colour {
  uint8_t zero;  // always 0, never written to a file
  uint8_t red;
  uint8_t green;
  uint8_t blue;
};
static_assert(sizeof(Colour) == 4);

// A colour table (sections 19 and 21).
struct GifPalette {
  int32_t count;    // entries in `colours`: 2 to 256 after a read, or 0 without a table
  Colour* colours;  // null when `count` is 0
};

// The logical screen descriptor and the global colour table (sections 18 and 19).
struct GifScreen {
  int32_t width;       // pixels, 0 to 65535 after a read
  int32_t height;      // pixels, 0 to 65535 after a read
  int32_t has_cmap;    // 1 when a global colour table is present, else 0
  int32_t color_res;   // bits per primary colour of the original, 1 to 8 after a read
  int32_t sorted;      // 1 when the global table is sorted by importance, else 0
  int32_t cmap_depth;  // bits per index, 1 to 8 after a read, with or without a table
  int32_t bgcolour;    // background colour index, 0 to 255
  int32_t aspect;      // the pixel aspect ratio byte as it stands in the file, 0 to 255
  GifPalette* cmap;    // the global colour table; null only in documents assembled for saving
};

// An image: descriptor, local colour table and pixels (sections 20 to 22).
struct GifPicture {
  int32_t left;        // pixels from the logical screen's left edge
  int32_t top;         // pixels from the logical screen's top edge
  int32_t width;       // pixels = bytes in each row
  int32_t height;      // pixels = number of rows
  int32_t has_cmap;    // 1 when a local colour table is present, else 0
  int32_t interlace;   // 1 when the file holds the rows interlaced, else 0
  int32_t sorted;      // 1 when the local table is sorted by importance, else 0
  int32_t reserved;    // the two reserved bits, 0 to 3, kept for writing
  int32_t cmap_depth;  // bits per index of the local table, 1 to 8; 0 without one
  GifPalette* cmap;    // the local colour table (empty without one); null only in documents assembled for saving
  // `height` row pointers, top row first in display order; null when `height` is 0 or less. Each row is `width`
  // bytes, one colour index per pixel, left to right; null when `width` is 0 or less. The rows are one piece of
  // memory, `pixels`; `width` and `height` must not change while there are rows.
  uint8_t** data;
  uint8_t* pixels;  // where the rows lie, in file order
};

// One data sub-block (section 15).
struct GifData {
  int32_t length;  // bytes, 1 to 255 after a read
  uint8_t* bytes;
};

// An extension, kept as opaque data (sections 23 to 26).
struct GifExtension {
  int32_t marker;  // the extension label, 0 to 255
  int32_t count;   // sub-blocks, the closing empty one not counted
  GifData** data;  // in file order
};

// One block after the screen and its table.
struct GifBlock {
  int32_t intro;            // the introducer: 0x2C for an image, 0x21 for an extension after a read
  GifPicture* picture;      // null unless this is an image
  GifExtension* extension;  // null unless this is an extension
};

struct Gif {
  char header[8];     // signature and version, at most 6 characters, NUL-terminated ("GIF87a" or "GIF89a")
  GifScreen* screen;  // present in every document
  int32_t count;      // blocks in `blocks`
  GifBlock** blocks;  // in file order
};

// Every `New...` gives null without memory; every `Delete...` accepts null.

// An empty document: header "GIF87a", a screen of zeros with an empty palette, no blocks.
Gif* NewGif();
void DeleteGif(Gif* gif);

// A block that is in no document.
void DeleteGifBlock(GifBlock* block);

// A palette of `count` zero entries; without an array when `count` is below 1.
GifPalette* NewPalette(int32_t count);
void DeletePalette(GifPalette* palette);

// A picture of zeros with an empty palette and no rows.
GifPicture* NewPicture();
void DeletePicture(GifPicture* picture);

void DeleteGifData(GifData* data);

// Release what a list holds and the list itself, leaving a count of 0.
void DeleteBlocks(Gif* gif);
void DeleteSubBlocks(GifExtension* extension);
