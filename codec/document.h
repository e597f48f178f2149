#pragma once

// A GIF document in memory: a tree of plain records, one `Gif` at its root.
//
// Every record and array is zero-filled when it is made and has exactly one owner; pointers own what they name.
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

// Neighbouring rows of damaged data that got equally many pixels.
struct GifRowRun {
  int64_t place;    // of the first row's pixels in the tail's
  int32_t first;    // the first row's position in the file; the rows go on to the next run, or to the image's end
  uint16_t length;  // pixels of each row; all others are 0
  bool alike;       // the first row's pixels are those of all; else they lie back to back
};

// The rows of an image from the first on that ended early: each as long as it got, so that memory follows what was
// decoded and not what the descriptor claims.
struct GifRowTail {
  int32_t count;  // 1 or more
  GifRowRun* runs;
  uint8_t* pixels;
  int64_t size;  // bytes at `pixels`
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
  // The pixels, one colour index each, row after row, left to right: `RowReader` (codec/picture_rows.h) gives them.
  // What neither `pixels` nor `tail` holds is 0. `width` and `height` must not change while there are pixels.
  int32_t in_passes;      // 1 when the rows lie in the order of the four passes, 0 when the top row comes first
  const uint8_t* pixels;  // of the first rows, back to back
  int64_t pixel_count;    // at `pixels`; the last row may be short
  void* memory;           // what `pixels` lies in, owned; null when the bytes are borrowed from a script's block
  GifRowTail* tail;       // the rows of damaged data; null without any
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

// Records that always come together are one piece of memory, released together: a document with its screen and
// palette, a block with what it holds, a sub-block with its bytes. Every `New...` gives null without memory; every
// `Delete...` accepts null.

// An empty document: header "GIF87a", a screen of zeros with an empty palette, no blocks.
Gif* NewGif();
void DeleteGif(Gif* gif);

// A block that is in no document, of zeros: with a picture that has an empty palette, an extension, both or neither.
GifBlock* NewGifBlock(bool with_picture, bool with_extension);
void DeleteGifBlock(GifBlock* block);

// Takes the picture out of a block and releases its colours and pixels.
void DropPicture(GifBlock* block);

// Gives an empty palette `count` zero entries, or none when `count` is below 1. False without memory.
bool MakeColours(GifPalette* palette, int32_t count);

// A sub-block whose bytes are still to be filled in.
GifData* NewGifData(int32_t length);
void DeleteGifData(GifData* data);

// Release what a list holds and the list itself, leaving a count of 0.
void DeleteBlocks(Gif* gif);
void DeleteSubBlocks(GifExtension* extension);
