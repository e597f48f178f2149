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

#include <cstdint>

#include "bridge/gif_plugin_host.h"

class RowRenderer;

// Which kind of pixels this host has; false until found out, then true for the life of the process.
extern bool IsDesktop;
extern bool IsConsole;

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

  // Stores `count` pixels at the cursor, as that many `WritePixel` calls would; `indexes` as for the
  // renderer.
  void WriteRow(const RowRenderer& renderer, const uint8_t* indexes, int64_t count);

  // Moves the cursor to the start of the next row; after the last one, back to the first.
  void NextRow();

  // The opaque colour as a word in the opened picture's pixel format.
  uint32_t PixelOf(uint8_t red, uint8_t green, uint8_t blue) const;

  // Ends the editing: the picture, with one reference for the caller, or null when none is open.
  REALpictureStruct* RenderPictureWriter();

  // Unlocks and gives up the picture, if one is open.
  void ReleasePicture();

 protected:
  void Hold(REALpictureStruct* picture);

  int64_t row_stride_ = 0;     // bytes from one row's start to the next one's, in a bitmap context
  int64_t width_ = 0;          // pixels
  int64_t height_ = 0;         // pixels
  int32_t pixel_format_ = 0;   // a context's alpha info, 1 to 6, or kGDPixelFormat; 0 before the first opening
  uint8_t* cursor_ = nullptr;  // the pixel that is written next; rows need not be aligned
  REALpictureDescription description_ = {};
  uint8_t* first_row_ = nullptr;
  int64_t row_index_ = 0;
  REALpictureStruct* picture_ = nullptr;  // holds one reference
  int** row_table_ = nullptr;             // a libgd image's rows, else null
  bool clear_cache_ = false;              // tell the host on release that the pixels changed
  bool description_locked_ = false;

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
};
