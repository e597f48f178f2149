#pragma once

// One image of a document as host pictures: its colours, and a mask of its transparent pixels.

#include "bridge/gif_plugin_host.h"
#include "codec/document.h"

// The size of the image that `MakePictureFromGifPicture` last accepted on this thread, in pixels; 0 before.
extern thread_local long long LastWidth;
extern thread_local long long LastHeight;

// A new 32-bit picture of the image's size, coloured through its own palette or else the document's global
// one. The caller owns the one reference. Null when there is no image, no palette with entries, or the host
// makes no picture of that size. The document may be null when the image has a palette of its own.
REALpictureStruct* MakePictureFromGifPicture(Gif* gif, GifPicture* picture);

// A new picture of the image's size, white where a pixel holds `transparent_index`, black elsewhere
// (everywhere for an index outside 0 to 255). The caller owns the one reference. Null as above, but no
// palette is needed.
REALpictureStruct* MakeMaskFromGifPicture(GifPicture* picture, int transparent_index);

// Draws the top left `width` by `height` pixels of `mask` into the mask of `picture`. Does nothing when an
// argument is null or below 1, or the host cannot. Both pictures stay the caller's.
void AddPictureMask(REALpictureStruct* picture, REALpictureStruct* mask, long long width, long long height);

// The transparent index that the extension just before the image gives (as a graphic control extension does:
// GIF89a, section 23), 0 to 255; -1 when there is none.
int FindTransparentIndex(Gif* gif, GifPicture* picture);
