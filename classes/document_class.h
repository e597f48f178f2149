#pragma once

// GIFZKV: a whole document. An opened one owns the records that every view taken from it looks at.

#include "bridge/host_records.h"

namespace document {

int64_t GetCount(REALobjectStruct* self, int64_t);
REALobjectStruct* GetGifScreen(REALobjectStruct* self, int64_t);
void SetGifScreen(REALobjectStruct* self, int64_t, REALobjectStruct* screen);
// "GIF87a" or "GIF89a" in well-formed files (GIF89a, section 17). What a script stores is kept whole, whatever its
// length.
REALstringStruct* GetHeader(REALobjectStruct* self, int64_t);
void SetHeader(REALobjectStruct* self, int64_t, REALstringStruct* header);
REALobjectStruct* GetFirstBlock(REALobjectStruct* self, int64_t);

REALobjectStruct* GetGifBlock(REALobjectStruct* self, int64_t index);
void AddGifBlock(REALobjectStruct* self, REALobjectStruct* block);
REALobjectStruct* CloneGIFZKV(REALobjectStruct* source);

void GifDestructor(REALobjectStruct* self);

}  // namespace document
