#pragma once

// Direct access to the pixels of a host picture.
//
// Desktop hosts keep them in a CoreGraphics bitmap context, console and web hosts in a libgd true-colour
// image. The editor opens either for writing, one row after the other from the top, in the pixel format that
// the memory has:
//
//   PictureWriter writer;
//   if (!writer.NewPictureWriter(width, height)) return nullptr;
//   for each row { writer.WritePixel(...) for each pixel; writer.NextRow(); }
//   return writer.RenderPictureWriter();
//
// An editor is empty, or holds one picture: a reference on it and the lock on its description. Both are given
// back when the picture is rendered or released, at the latest by the destructor.

#include <atomic>
#include <cstdint>
#include <span>

#include "bridge/host_reference.h"
#include "picture/locked_description.h"

class RowRenderer;

// Which kind of pixels this host has; false until found out, then true for the life of the process.
extern std::atomic<bool> IsDesktop;
extern std::atomic<bool> IsConsole;

// An opaque colour as a word: how far each part is shifted up, and the rest of it.
struct PixelFormat {
  uint32_t red, green, blue, rest;

  uint32_t PixelOf(uint32_t r, uint32_t g, uint32_t b) const { return r << red | g << green | b << blue | rest; }
};

class PictureEditor {
 public:
  PictureEditor() = default;
  PictureEditor(const PictureEditor&) = delete;
  PictureEditor& operator=(const PictureEditor&) = delete;
  virtual ~PictureEditor();

  // Open the picture (borrowed) for writing; the flags have no effect. False leaves the picture as it was and
  // the editor without it: the host does not describe it so, or its pixels are not 32 bits each in one of the
  // formats below, or the description contradicts itself (no memory, rows shorter than the width).
  bool GetPictureEditorCGBitmapContext(REALpictureStruct* picture, bool, bool, bool);
  bool GetPictureEditorGDImagePtr(REALpictureStruct* picture, bool, bool);

  // Stores one opaque colour at the cursor and moves the cursor to the next pixel. Nothing is checked: a row
  // takes `width` pixels and no more.
  void WritePixel(uint8_t red, uint8_t green, uint8_t blue);

  // Stores rows of `count` pixels from the cursor on, as that many `WritePixel` calls and a `NextRow` for each would;
  // at most `kRowsAtOnce`.
  static constexpr size_t kRowsAtOnce = 16;
  void WriteRows(const RowRenderer& renderer, std::span<const uint8_t* const> rows, int64_t count);

  // Moves the cursor to the start of the next row; after the last one, back to the first.
  void NextRow();

  // How the opened picture holds opaque colours.
  PixelFormat Format() const;

  // Ends the editing: the picture, with one reference for the caller, or null when none is open.
  REALpictureStruct* RenderPictureWriter();

  // Unlocks and gives up the picture, if one is open.
  void ReleasePicture();

 protected:
  // Takes over the lock and shares the picture.
  void Hold(REALpictureStruct* picture, LockedDescription description);

  int64_t row_stride_ = 0;     // bytes from one row's start to the next one's, in a bitmap context
  int64_t width_ = 0;          // pixels
  int64_t height_ = 0;         // pixels
  int32_t pixel_format_ = 0;   // a context's alpha info, 1 to 6, or kGDPixelFormat; 0 before the first opening
  uint8_t* cursor_ = nullptr;  // the pixel that is written next; rows need not be aligned
  uint8_t* first_row_ = nullptr;
  int64_t row_index_ = 0;
  int** row_table_ = nullptr;  // a libgd image's rows, else null
  bool clear_cache_ = false;   // tell the host on release that the pixels changed
  PictureRef picture_;
  LockedDescription description_;  // behind the picture, which it must not outlive

  static constexpr int32_t kGDPixelFormat = 8;
};

class PictureWriter : public PictureEditor {
 public:
  ~PictureWriter() override = default;

  // Makes a host picture of that size (each side 1 to 32767 pixels) with 32 bits per pixel and opens it.
  // False leaves the editor as it was when the host makes no such picture, else empty.
  bool NewPictureWriter(long long width, long long height);

 private:
  bool OpenPixels(REALpictureStruct* picture);
  bool HoldsRows(int64_t width, int64_t height) const;
};
