#pragma once

// The handlers of the members that return pictures. Each returns a picture with one reference for the script,
// or null; none raises an exception.

#include "bridge/gif_plugin_host.h"

// GifPictureZKV
REALpictureStruct* MakePicture(REALobjectStruct* self);
REALpictureStruct* MakeMask(REALobjectStruct* self);
REALpictureStruct* MakeMask2(REALobjectStruct* self, int64_t transparent_index);

// GIFZKV
REALpictureStruct* MakeFirstPicture(REALobjectStruct* self);
REALpictureStruct* MakeFirstMask(REALobjectStruct* self);
REALpictureStruct* MakeFirstPictureWithMask(REALobjectStruct* self);

// Global
REALpictureStruct* GifStringToPictureZKV(REALstringStruct* data);
