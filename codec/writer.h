#pragma once

// Writes a document as a GIF byte stream.

#include "codec/byte_stream.h"
#include "codec/document.h"

// Writes the values of the records as they stand, neither checked nor mended; what does not fit its packed bits is
// clamped into them. The stream is a file stream, opened and closed by the caller. Errors are not reported.
void WriteGif(MyFILE* stream, const Gif* gif);
