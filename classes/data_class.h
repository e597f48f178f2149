#pragma once

// GifDataZKV: one data sub-block. A free-standing one keeps its bytes as a host string of any length: host strings
// never change, so copies share it.

#include "classes/property.h"

struct GifDataInstance {
  using Record = GifData;
  GifData* record;
  REALobjectStruct* owner;
  REALstringStruct* data_string;  // the sub-block's bytes
};
static_assert(sizeof(GifDataInstance) == 24);

extern REALclassDefinition GifDataClass;
template <>
inline REALclassDefinition& DefinitionOf<GifDataInstance>() {
  return GifDataClass;
}

namespace data {

int64_t GetLength(REALobjectStruct* self, int64_t);  // bytes
REALstringStruct* CopyDString(REALobjectStruct* self, int64_t);
// The string's bytes become the sub-block's, whatever their text encoding.
void SetDString(REALobjectStruct* self, int64_t, REALstringStruct* value);
// Always a copy; null for an empty sub-block. Raises "OutOfMemoryException" when the host makes no MemoryBlock.
REALmemoryBlockStruct* CopyDMemory(REALobjectStruct* self, int64_t);
// Copies the block: later changes to it do not reach the sub-block.
void SetDMemory(REALobjectStruct* self, int64_t, REALmemoryBlockStruct* value);

REALobjectStruct* CloneGifDataZKV(REALobjectStruct* source);

void GifDataDestructor(REALobjectStruct* self);

}  // namespace data
