#pragma once

// Opening documents from files and strings. Every failure gives null; no exception is raised.

#include "bridge/gif_plugin_host.h"
#include "codec/document.h"

// A new GIFZKV instance that owns the document read; null when the bytes do not begin with "GIF", the item
// names no readable file, or memory or the instance is not to be had.
REALobjectStruct* OpenGIFfile1(REALfolderItemStruct* item);
REALobjectStruct* OpenGIFstring(REALstringStruct* data);

// The document alone, owned by the caller.
Gif* ReadGifString(REALstringStruct* data);
