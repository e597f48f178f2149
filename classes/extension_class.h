#pragma once

// GifExtensionZKV: one extension, its label and its data sub-blocks (GIF89a, sections 23 to 26).

#include "bridge/host_records.h"

namespace extension {

REALobjectStruct* GetFirstData(REALobjectStruct* self, int64_t);
int64_t GetCount(REALobjectStruct* self, int64_t);
int64_t GetMarker(REALobjectStruct* self, int64_t);
void SetMarker(REALobjectStruct* self, int64_t, int64_t marker);

REALobjectStruct* GetGifData(REALobjectStruct* self, int64_t index);
void AddData(REALobjectStruct* self, REALobjectStruct* data);
REALobjectStruct* CloneGifExtensionZKV(REALobjectStruct* source);

void GifExtensionDestructor(REALobjectStruct* self);

}  // namespace extension
