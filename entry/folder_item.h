#pragma once

// Opens the file that a host FolderItem names.

#include <cstdio>

#include "bridge/gif_plugin_host.h"

// A stdio stream with a buffer of 1 MiB, closed by the caller; null when the item is null, has no path, or `fopen`
// fails. `mode` goes to `fopen` unchanged. The item may name a file that does not exist yet.
FILE* OpenCFILE(REALfolderItemStruct* item, const char* mode);
