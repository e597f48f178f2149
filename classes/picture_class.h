#pragma once

// GifPictureZKV: one image, its descriptor, local colour table and pixels (GIF89a, sections 20 to 22). What the
// numbers mean stands at the fields of GifPicture in codec/document.h; positions and sizes are pixels.
//
// Pixels are MemoryBlocks: rows of `width` bytes, top row first, back to back, one colour index each. Nothing checks
// that a stored block is that large; a shorter one reads as if zeros followed it. The handlers that make pictures
// of the host are in entry/picture_methods.h.

#include "classes/property.h"

struct GifPictureInstance {
  using Record = GifPicture;
  GifPicture* record;
  REALobjectStruct* owner;
  HostInteger left;
  HostInteger top;
  HostInteger width;
  HostInteger height;
  HostBoolean sorted;
  HostInteger cmap_depth;
  HostBoolean interlace;
  HostInteger has_cmap;  // a boolean in its lowest byte
  REALobjectStruct* palette;
  REALmemoryBlockStruct* pixel_block;  // rows of `width` bytes, top row first, back to back
};
static_assert(sizeof(GifPictureInstance) == 96);

extern REALclassDefinition GifPictureClass;
template <>
inline REALclassDefinition& DefinitionOf<GifPictureInstance>() {
  return GifPictureClass;
}

namespace picture {

using Left = Number<&GifPicture::left, &GifPictureInstance::left>;
using Top = Number<&GifPicture::top, &GifPictureInstance::top>;
using Width = Number<&GifPicture::width, &GifPictureInstance::width>;
using Height = Number<&GifPicture::height, &GifPictureInstance::height>;
using Sorted = Flag<&GifPicture::sorted, &GifPictureInstance::sorted>;
using CmapDepth = Number<&GifPicture::cmap_depth, &GifPictureInstance::cmap_depth>;
using Interlace = Flag<&GifPicture::interlace, &GifPictureInstance::interlace>;
using HasCmap = Flag<&GifPicture::has_cmap, &GifPictureInstance::has_cmap>;
using Fields = FieldList<Left, Top, Width, Height, Sorted, CmapDepth, Interlace, HasCmap>;
static_assert(offsetof(GifPictureInstance, palette) - offsetof(GifPictureInstance, left) == Fields::kSize);

inline int64_t GetLeft(REALobjectStruct* self, int64_t) { return Left::Get(self); }
inline void SetLeft(REALobjectStruct* self, int64_t, int64_t value) { Left::Set(self, value); }
inline int64_t GetTop(REALobjectStruct* self, int64_t) { return Top::Get(self); }
inline void SetTop(REALobjectStruct* self, int64_t, int64_t value) { Top::Set(self, value); }
inline int64_t GetWidth(REALobjectStruct* self, int64_t) { return Width::Get(self); }
inline void SetWidth(REALobjectStruct* self, int64_t, int64_t value) { Width::Set(self, value); }
inline int64_t GetHeight(REALobjectStruct* self, int64_t) { return Height::Get(self); }
inline void SetHeight(REALobjectStruct* self, int64_t, int64_t value) { Height::Set(self, value); }
inline int8_t Getsorted(REALobjectStruct* self, int64_t) { return Sorted::Get(self); }
inline void Setsorted(REALobjectStruct* self, int64_t, int8_t value) { Sorted::Set(self, value); }
inline int64_t Getcmap_depth(REALobjectStruct* self, int64_t) { return CmapDepth::Get(self); }
inline void Setcmap_depth(REALobjectStruct* self, int64_t, int64_t value) { CmapDepth::Set(self, value); }
inline int8_t Getinterlace(REALobjectStruct* self, int64_t) { return Interlace::Get(self); }
inline void Setinterlace(REALobjectStruct* self, int64_t, int8_t value) { Interlace::Set(self, value); }
inline int8_t Gethas_cmap(REALobjectStruct* self, int64_t) { return HasCmap::Get(self); }
inline void Sethas_cmap(REALobjectStruct* self, int64_t, int8_t value) { HasCmap::Set(self, value); }

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
