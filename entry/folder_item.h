#pragma once

// Opens the file that a host FolderItem names.

#include "bridge/gif_plugin_host.h"
#include "entry/buffered_file.h"

// A stream with a buffer of 1 MiB; empty when the item is null, has no path, or `fopen` fails. `mode` goes to `fopen`
// unchanged. The item may name a file that does not exist yet.
BufferedFile OpenCFILE(REALfolderItemStruct* item, const char* mode);
