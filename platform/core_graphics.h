#pragma once

// The CoreGraphics calls that reach a bitmap context's pixels. On macOS these are the framework's own; elsewhere
// a context is the plain record below, which the host fills, and the calls read it back.

#if defined(__APPLE__)
#include <CoreGraphics/CoreGraphics.h>
#else

#include <cstddef>
#include <cstdint>

struct CGContext {
  void* data;            // first byte of row 0; owned by whoever made the context
  size_t width;          // pixels
  size_t height;         // pixels
  size_t bytes_per_row;  // bytes from one row's start to the next one's
  size_t bits_per_pixel;
  uint32_t alpha_info;  // CGImageAlphaInfo
};
using CGContextRef = CGContext*;

// Where a pixel's alpha byte lies and how it is to be read; the numbers are CoreGraphics' own.
enum CGImageAlphaInfo : uint32_t {
  kCGImageAlphaNone = 0,
  kCGImageAlphaPremultipliedLast = 1,
  kCGImageAlphaPremultipliedFirst = 2,
  kCGImageAlphaLast = 3,
  kCGImageAlphaFirst = 4,
  kCGImageAlphaNoneSkipLast = 5,
  kCGImageAlphaNoneSkipFirst = 6,
  kCGImageAlphaOnly = 7,
};

// Each takes a context that is not null and cannot fail.
void* CGBitmapContextGetData(CGContextRef context);
size_t CGBitmapContextGetWidth(CGContextRef context);
size_t CGBitmapContextGetHeight(CGContextRef context);
size_t CGBitmapContextGetBytesPerRow(CGContextRef context);
size_t CGBitmapContextGetBitsPerPixel(CGContextRef context);
CGImageAlphaInfo CGBitmapContextGetAlphaInfo(CGContextRef context);

#endif
