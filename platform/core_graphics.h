#pragma once

// The CoreGraphics calls that reach a bitmap context's pixels. On macOS these are the framework's own; elsewhere
// a context is a plain record, which the host fills, and the calls read it back.

#include "platform/host_platform.h"

#if !defined(__APPLE__)

#include <cstddef>
#include <cstdint>

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
