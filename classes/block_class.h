#pragma once

// GifBlockZKV: one block of a document, an image or an extension. Scripts may store both; nothing checks that what
// is stored matches the introducer.

#include "bridge/host_records.h"

namespace block {

int64_t GetIntro(REALobjectStruct* self, int64_t);
void SetIntro(REALobjectStruct* self, int64_t, int64_t intro);
REALobjectStruct* GetGifExtension(REALobjectStruct* self, int64_t);
void SetGifExtension(REALobjectStruct* self, int64_t, REALobjectStruct* extension);
REALobjectStruct* GetGifPicture(REALobjectStruct* self, int64_t);
void SetGifPicture(REALobjectStruct* self, int64_t, REALobjectStruct* picture);

REALobjectStruct* CloneGifBlockZKV(REALobjectStruct* source);

void GifBlockDestructor(REALobjectStruct* self);

}  // namespace block
