#pragma once

// GifScreenZKV: the logical screen and the global colour table (GIF89a, sections 18 and 19). Numbers are stored
// whole; what they mean stands at the fields of GifScreen in codec/document.h.

#include "bridge/host_records.h"

namespace screen {

int64_t GetWidth(REALobjectStruct* self, int64_t);
void SetWidth(REALobjectStruct* self, int64_t, int64_t value);
int64_t GetHeight(REALobjectStruct* self, int64_t);
void SetHeight(REALobjectStruct* self, int64_t, int64_t value);
int8_t Gethas_cmap(REALobjectStruct* self, int64_t);
void Sethas_cmap(REALobjectStruct* self, int64_t, int8_t value);
int64_t Getcolor_res(REALobjectStruct* self, int64_t);
void Setcolor_res(REALobjectStruct* self, int64_t, int64_t value);
int8_t Getsorted(REALobjectStruct* self, int64_t);
void Setsorted(REALobjectStruct* self, int64_t, int8_t value);
int64_t Getcmap_depth(REALobjectStruct* self, int64_t);
void Setcmap_depth(REALobjectStruct* self, int64_t, int64_t value);
REALobjectStruct* GetGifPalette(REALobjectStruct* self, int64_t);
void SetGifPalette(REALobjectStruct* self, int64_t, REALobjectStruct* palette);
int64_t Getbgcolour(REALobjectStruct* self, int64_t);
void Setbgcolour(REALobjectStruct* self, int64_t, int64_t value);
int64_t Getaspect(REALobjectStruct* self, int64_t);
void Setaspect(REALobjectStruct* self, int64_t, int64_t value);

REALobjectStruct* CloneGifScreenZKV(REALobjectStruct* source);

void GifScreenDestructor(REALobjectStruct* self);

}  // namespace screen
