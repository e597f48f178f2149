#include "platform/frameworks.h"
#include "platform/host_platform.h"

void* CGBitmapContextGetData(CGContextRef context) { return context->data; }
size_t CGBitmapContextGetWidth(CGContextRef context) { return context->width; }
size_t CGBitmapContextGetHeight(CGContextRef context) { return context->height; }
size_t CGBitmapContextGetBytesPerRow(CGContextRef context) { return context->bytes_per_row; }
size_t CGBitmapContextGetBitsPerPixel(CGContextRef context) { return context->bits_per_pixel; }
CGImageAlphaInfo CGBitmapContextGetAlphaInfo(CGContextRef context) { return context->alpha_info; }
