#pragma once

// GifPictureZKV: one image, its descriptor, local colour table and pixels (GIF89a, sections 20 to 22). What the
// numbers mean stands at the fields of GifPicture in codec/document.h; positions and sizes are pixels.
//
// Pixels are MemoryBlocks: rows of `width` bytes, top row first, back to back, one colour index each. Nothing checks
// that a stored block is that large; a shorter one reads as if zeros followed it. The handlers that make pictures
// of the host are in entry/picture_methods.h.

#include "bridge/host_records.h"

namespace picture {

int64_t GetLeft(REALobjectStruct* self, int64_t);
void SetLeft(REALobjectStruct* self, int64_t, int64_t value);
int64_t GetTop(REALobjectStruct* self, int64_t);
void SetTop(REALobjectStruct* self, int64_t, int64_t value);
int64_t GetWidth(REALobjectStruct* self, int64_t);
void SetWidth(REALobjectStruct* self, int64_t, int64_t value);
int64_t GetHeight(REALobjectStruct* self, int64_t);
void SetHeight(REALobjectStruct* self, int64_t, int64_t value);
int8_t Getinterlace(REALobjectStruct* self, int64_t);
void Setinterlace(REALobjectStruct* self, int64_t, int8_t value);
int8_t Getsorted(REALobjectStruct* self, int64_t);
void Setsorted(REALobjectStruct* self, int64_t, int8_t value);
int8_t Gethas_cmap(REALobjectStruct* self, int64_t);
void Sethas_cmap(REALobjectStruct* self, int64_t, int8_t value);
int64_t Getcmap_depth(REALobjectStruct* self, int64_t);
void Setcmap_depth(REALobjectStruct* self, int64_t, int64_t value);
REALobjectStruct* GetGifPalette(REALobjectStruct* self, int64_t);
void SetGifPalette(REALobjectStruct* self, int64_t, REALobjectStruct* palette);
// The block that was stored, shared with the script, or else a new copy of an opened image's rows. Null without
// pixels, for 2^31 pixels or more, and when the host makes no block.
REALmemoryBlockStruct* GetData(REALobjectStruct* self, int64_t);
void SetData(REALobjectStruct* self, int64_t, REALmemoryBlockStruct* value);

// A copy of one row; null for rows that are not there and rows of no bytes. Raises "OutOfMemoryException" when the
// host makes no block.
REALmemoryBlockStruct* GetPixelData(REALobjectStruct* self, int64_t row);
// All pixels in a block that the picture does not share; null as for GetData.
REALmemoryBlockStruct* CopyData(REALobjectStruct* self);
REALobjectStruct* CloneGifPictureZKV(REALobjectStruct* source);

void GifPictureDestructor(REALobjectStruct* self);

}  // namespace picture
