#pragma once

// GifScreenZKV: the logical screen and the global colour table (GIF89a, sections 18 and 19). Numbers are stored
// whole; what they mean stands at the fields of GifScreen in codec/document.h.

#include "classes/property.h"

struct GifScreenInstance {
  using Record = GifScreen;
  GifScreen* record;
  REALobjectStruct* owner;
  HostInteger width;
  HostInteger height;
  HostInteger color_res;
  HostBoolean sorted;
  HostInteger cmap_depth;
  HostInteger bgcolour;
  HostInteger has_cmap;  // a boolean in its lowest byte
  HostInteger aspect;
  REALobjectStruct* palette;
};
static_assert(sizeof(GifScreenInstance) == 88);

extern REALclassDefinition GifScreenClass;
template <>
inline REALclassDefinition& DefinitionOf<GifScreenInstance>() {
  return GifScreenClass;
}

namespace screen {

using Width = Number<&GifScreen::width, &GifScreenInstance::width>;
using Height = Number<&GifScreen::height, &GifScreenInstance::height>;
using ColorRes = Number<&GifScreen::color_res, &GifScreenInstance::color_res>;
using Sorted = Flag<&GifScreen::sorted, &GifScreenInstance::sorted>;
using CmapDepth = Number<&GifScreen::cmap_depth, &GifScreenInstance::cmap_depth>;
using BgColour = Number<&GifScreen::bgcolour, &GifScreenInstance::bgcolour>;
using HasCmap = Flag<&GifScreen::has_cmap, &GifScreenInstance::has_cmap>;
using Aspect = Number<&GifScreen::aspect, &GifScreenInstance::aspect>;
using Fields = FieldList<Width, Height, ColorRes, Sorted, CmapDepth, BgColour, HasCmap, Aspect>;
static_assert(offsetof(GifScreenInstance, palette) - offsetof(GifScreenInstance, width) == Fields::kSize);

inline int64_t GetWidth(REALobjectStruct* self, int64_t) { return Width::Get(self); }
inline void SetWidth(REALobjectStruct* self, int64_t, int64_t value) { Width::Set(self, value); }
inline int64_t GetHeight(REALobjectStruct* self, int64_t) { return Height::Get(self); }
inline void SetHeight(REALobjectStruct* self, int64_t, int64_t value) { Height::Set(self, value); }
inline int64_t Getcolor_res(REALobjectStruct* self, int64_t) { return ColorRes::Get(self); }
inline void Setcolor_res(REALobjectStruct* self, int64_t, int64_t value) { ColorRes::Set(self, value); }
inline int8_t Getsorted(REALobjectStruct* self, int64_t) { return Sorted::Get(self); }
inline void Setsorted(REALobjectStruct* self, int64_t, int8_t value) { Sorted::Set(self, value); }
inline int64_t Getcmap_depth(REALobjectStruct* self, int64_t) { return CmapDepth::Get(self); }
inline void Setcmap_depth(REALobjectStruct* self, int64_t, int64_t value) { CmapDepth::Set(self, value); }
inline int64_t Getbgcolour(REALobjectStruct* self, int64_t) { return BgColour::Get(self); }
inline void Setbgcolour(REALobjectStruct* self, int64_t, int64_t value) { BgColour::Set(self, value); }
inline int8_t Gethas_cmap(REALobjectStruct* self, int64_t) { return HasCmap::Get(self); }
inline void Sethas_cmap(REALobjectStruct* self, int64_t, int8_t value) { HasCmap::Set(self, value); }
inline int64_t Getaspect(REALobjectStruct* self, int64_t) { return Aspect::Get(self); }
inline void Setaspect(REALobjectStruct* self, int64_t, int64_t value) { Aspect::Set(self, value); }

REALobjectStruct* GetGifPalette(REALobjectStruct* self, int64_t);
void SetGifPalette(REALobjectStruct* self, int64_t, REALobjectStruct* palette);

REALobjectStruct* CloneGifScreenZKV(REALobjectStruct* source);

void GifScreenDestructor(REALobjectStruct* self);

}  // namespace screen
