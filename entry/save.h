#pragma once

// Saving a document to a file.

#include "bridge/gif_plugin_host.h"

// Writes the document of a GIFZKV instance, opened or built by scripts, to the file that the item names, made
// or replaced. False (0), and no file touched, when `data` is null, memory for the document is lacking or an image
// built by scripts has a negative width or height; false when the file cannot be opened for writing. Errors while
// writing are not detected.
int8_t SaveGIFfile1(REALfolderItemStruct* item, REALobjectStruct* data);
