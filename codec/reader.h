#pragma once

// Reads a GIF byte stream into a document.

#include "codec/byte_stream.h"
#include "codec/document.h"

// Fills a document fresh from `NewGif`. Nothing is reported: the read stops where the data stops making sense and
// leaves what it has built; past the end the stream gives zeros. A stream that begins with neither "GIF87a" nor
// "GIF89a" leaves only its first six bytes, in `header`. Does nothing when an argument is null.
void ReadGif(MyFILE* stream, Gif* gif);

// Makes and reads the `count` entries that the caller has set. Without memory the entries are passed over in the
// stream, `count` becomes 0, and the result is false.
bool ReadGifPalette(MyFILE* stream, GifPalette* palette);

// One data sub-block, owned by the caller; null at the empty one that ends a sequence, and without memory (the
// sub-block's bytes are then left unread).
GifData* ReadGifData(MyFILE* stream);
