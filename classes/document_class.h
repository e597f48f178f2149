#pragma once

// GIFZKV: a whole document. An opened one owns the records that every view taken from it looks at.

#include "classes/property.h"

struct GifInstance {
  using Record = Gif;
  Gif* record;         // owned, unlike in the other classes; released by the destructor alone
  ObjectList* blocks;  // of GifBlockZKV; null until the first Add
  REALobjectStruct* screen;
  REALstringStruct* header;
};
static_assert(sizeof(GifInstance) == 32);

extern REALclassDefinition GifClass;
template <>
inline REALclassDefinition& DefinitionOf<GifInstance>() {
  return GifClass;
}

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
