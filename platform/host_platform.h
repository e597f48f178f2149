#pragma once

// What a platform has of its own for files and bitmaps, and what stands in for it elsewhere. A part of
// gif_plugin_host.h; C and C++ can include it.

#include <assert.h>
#include <stddef.h>
#include <stdint.h>

#if defined(__APPLE__)
#include "platform/frameworks.h"
#else

// A bitmap in memory, which the host makes, fills in and frees.
typedef struct CGContext {
  void* data;             // first byte of the top row
  size_t width;           // pixels
  size_t height;          // pixels
  size_t bytes_per_row;   // from one row's start to the next one's; at least 4 * width
  size_t bits_per_pixel;  // the plugin writes to 32
  uint32_t alpha_info;    // CGImageAlphaInfo, as Core Graphics numbers it: 1, 3, 5: bytes red, green, blue, alpha;
                          // 2, 4, 6: alpha, red, green, blue; the plugin writes to no others
} CGContext;

#endif

#if !defined(GIF_SYSTEM_HAS_HEADERS)

// A file or folder.
typedef struct FSRef {
#if defined(__APPLE__)
  uint8_t hidden[80];
#else
  // A NUL-terminated absolute path in UTF-8. On Windows it begins with a drive or two backslashes, and either slash
  // separates.
  char path[4096];
#endif
} FSRef;

// The last part of a path, in UTF-16 units.
typedef struct HFSUniStr255 {
  uint16_t length;        // units in use, 1 to 255
  uint16_t unicode[255];  // not terminated
} HFSUniStr255;

#endif

#if defined(__APPLE__)
static_assert(sizeof(FSRef) == 80, "file");
#else
static_assert(sizeof(FSRef) == 4096, "file");
#endif
static_assert(sizeof(HFSUniStr255) == 512, "name");
