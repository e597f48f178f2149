#pragma once

// What of Core Foundation and Core Graphics is called on macOS: from the frameworks' headers, or declared here where
// a tool chain has none. Same names, same forms.

#if __has_include(<CoreServices/CoreServices.h>)
#include <CoreFoundation/CoreFoundation.h>
#include <CoreGraphics/CoreGraphics.h>
#include <CoreServices/CoreServices.h>
#else

#include <cstddef>
#include <cstdint>

#include "platform/host_platform.h"

using CFAllocatorRef = const struct __CFAllocator*;
using CFTypeRef = const void*;
using CFStringRef = const struct __CFString*;
using CFMutableStringRef = struct __CFString*;
using CFURLRef = const struct __CFURL*;
using CFIndex = long;
using UniChar = uint16_t;
using Boolean = unsigned char;
enum CFStringEncoding : uint32_t { kCFStringEncodingUTF8 = 0x08000100 };
enum CFStringNormalizationForm : CFIndex { kCFStringNormalizationFormD = 0 };
enum CFURLPathStyle : CFIndex { kCFURLPOSIXPathStyle = 0 };

using CGContextRef = struct CGContext*;
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

extern "C" {
CFTypeRef CFRetain(CFTypeRef object);
void CFRelease(CFTypeRef object);
CFStringRef CFStringCreateWithCharacters(CFAllocatorRef allocator, const UniChar* units, CFIndex count);
CFMutableStringRef CFStringCreateMutableCopy(CFAllocatorRef allocator, CFIndex max_length, CFStringRef string);
void CFStringNormalize(CFMutableStringRef string, CFStringNormalizationForm form);
CFIndex CFStringGetLength(CFStringRef string);
Boolean CFStringGetCString(CFStringRef string, char* buffer, CFIndex buffer_size, CFStringEncoding encoding);
CFURLRef CFURLCreateFromFSRef(CFAllocatorRef allocator, const FSRef* reference);
CFURLRef CFURLCreateCopyAppendingPathComponent(CFAllocatorRef allocator, CFURLRef url, CFStringRef component,
                                               Boolean is_directory);
CFStringRef CFURLCopyFileSystemPath(CFURLRef url, CFURLPathStyle style);

void* CGBitmapContextGetData(CGContextRef context);
size_t CGBitmapContextGetWidth(CGContextRef context);
size_t CGBitmapContextGetHeight(CGContextRef context);
size_t CGBitmapContextGetBytesPerRow(CGContextRef context);
size_t CGBitmapContextGetBitsPerPixel(CGContextRef context);
CGImageAlphaInfo CGBitmapContextGetAlphaInfo(CGContextRef context);
}

#endif
