#pragma once

// GifBlockZKV: one block of a document, an image or an extension. Scripts may store both; nothing checks that what
// is stored matches the introducer.

#include "classes/property.h"

struct GifBlockInstance {
  using Record = GifBlock;
  GifBlock* record;
  REALobjectStruct* owner;
  HostInteger intro;
  REALobjectStruct* extension;
  REALobjectStruct* picture;
};
static_assert(sizeof(GifBlockInstance) == 40);

extern REALclassDefinition GifBlockClass;
template <>
inline REALclassDefinition& DefinitionOf<GifBlockInstance>() {
  return GifBlockClass;
}

namespace block {

using Intro = Number<&GifBlock::intro, &GifBlockInstance::intro>;
using Fields = FieldList<Intro>;

inline int64_t GetIntro(REALobjectStruct* self, int64_t) { return Intro::Get(self); }
inline void SetIntro(REALobjectStruct* self, int64_t, int64_t value) { Intro::Set(self, value); }

REALobjectStruct* GetGifExtension(REALobjectStruct* self, int64_t);
void SetGifExtension(REALobjectStruct* self, int64_t, REALobjectStruct* extension);
REALobjectStruct* GetGifPicture(REALobjectStruct* self, int64_t);
void SetGifPicture(REALobjectStruct* self, int64_t, REALobjectStruct* picture);

REALobjectStruct* CloneGifBlockZKV(REALobjectStruct* source);

void GifBlockDestructor(REALobjectStruct* self);

}  // namespace block
