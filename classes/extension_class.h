#pragma once

// GifExtensionZKV: one extension, its label and its data sub-blocks (GIF89a, sections 23 to 26).

#include "classes/property.h"

struct GifExtensionInstance {
  using Record = GifExtension;
  GifExtension* record;
  REALobjectStruct* owner;
  HostInteger marker;
  ObjectList* items;  // of GifDataZKV; null until the first Add
};
static_assert(sizeof(GifExtensionInstance) == 32);

extern REALclassDefinition GifExtensionClass;
template <>
inline REALclassDefinition& DefinitionOf<GifExtensionInstance>() {
  return GifExtensionClass;
}

namespace extension {

using Marker = Number<&GifExtension::marker, &GifExtensionInstance::marker>;
using Fields = FieldList<Marker>;

inline int64_t GetMarker(REALobjectStruct* self, int64_t) { return Marker::Get(self); }
inline void SetMarker(REALobjectStruct* self, int64_t, int64_t value) { Marker::Set(self, value); }

REALobjectStruct* GetFirstData(REALobjectStruct* self, int64_t);
int64_t GetCount(REALobjectStruct* self, int64_t);

REALobjectStruct* GetGifData(REALobjectStruct* self, int64_t index);
void AddData(REALobjectStruct* self, REALobjectStruct* data);
REALobjectStruct* CloneGifExtensionZKV(REALobjectStruct* source);

void GifExtensionDestructor(REALobjectStruct* self);

}  // namespace extension
