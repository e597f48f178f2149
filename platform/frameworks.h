#pragma once

// The calls of Core Foundation that turn a file-system reference into a path, and those of CoreGraphics that reach a
// bitmap context's pixels. On macOS they are the frameworks' own, declared here where a tool chain has no headers for
// them; elsewhere they are small stand-ins with the same names, forms and ownership: what a Create or Copy call
// returns carries one reference for the caller, and is null when it cannot be made. Except where said, arguments must
// not be null. C and C++ can include it.

#if defined(__APPLE__) && __has_include(<CoreServices/CoreServices.h>)
#define GIF_SYSTEM_HAS_HEADERS
#include <CoreFoundation/CoreFoundation.h>
#include <CoreGraphics/CoreGraphics.h>
#include <CoreServices/CoreServices.h>
#else

#include <stddef.h>
#include <stdint.h>

struct FSRef;

typedef const struct CFAllocator* CFAllocatorRef;  // not looked at; may be null
typedef const void* CFTypeRef;
typedef const struct CFText* CFStringRef;  // in UTF-16 units
typedef struct CFText* CFMutableStringRef;
typedef const struct CFText* CFURLRef;
typedef ptrdiff_t CFIndex;
typedef uint16_t UniChar;
typedef unsigned char Boolean;
typedef uint32_t CFStringEncoding;
typedef CFIndex CFStringNormalizationForm;
typedef CFIndex CFURLPathStyle;
enum {
  kCFStringEncodingUTF8 = 0x08000100,
  kCFStringNormalizationFormD = 0,
  kCFURLPOSIXPathStyle = 0,
};

typedef struct CGContext* CGContextRef;
typedef struct CGColorSpace* CGColorSpaceRef;

// Where a pixel's alpha byte lies and how it is to be read.
typedef uint32_t CGImageAlphaInfo;
enum {
  kCGImageAlphaNone = 0,
  kCGImageAlphaPremultipliedLast = 1,
  kCGImageAlphaPremultipliedFirst = 2,
  kCGImageAlphaLast = 3,
  kCGImageAlphaFirst = 4,
  kCGImageAlphaNoneSkipLast = 5,
  kCGImageAlphaNoneSkipFirst = 6,
  kCGImageAlphaOnly = 7,
};

#if defined(__cplusplus)
extern "C" {
#endif

CFTypeRef CFRetain(CFTypeRef object);
void CFRelease(CFTypeRef object);

CFStringRef CFStringCreateWithCharacters(CFAllocatorRef allocator, const UniChar* units, CFIndex count);
CFMutableStringRef CFStringCreateMutableCopy(CFAllocatorRef allocator, CFIndex max_length, CFStringRef string);
// Puts base characters and marks in place of characters that combine them; without memory changes nothing.
void CFStringNormalize(CFMutableStringRef string, CFStringNormalizationForm form);
CFIndex CFStringGetLength(CFStringRef string);  // UTF-16 units
// Writes NUL-terminated UTF-8. False when that is more than `buffer_size` bytes or has no UTF-8 form, and for
// a NUL within the string, which would cut a path short.
Boolean CFStringGetCString(CFStringRef string, char* buffer, CFIndex buffer_size, CFStringEncoding encoding);

CFURLRef CFURLCreateFromFSRef(CFAllocatorRef allocator, const struct FSRef* reference);
CFURLRef CFURLCreateCopyAppendingPathComponent(CFAllocatorRef allocator, CFURLRef url, CFStringRef component,
                                               Boolean is_directory);
CFStringRef CFURLCopyFileSystemPath(CFURLRef url, CFURLPathStyle style);

// Each takes a context that is not null and cannot fail.
void* CGBitmapContextGetData(CGContextRef context);
size_t CGBitmapContextGetWidth(CGContextRef context);
size_t CGBitmapContextGetHeight(CGContextRef context);
size_t CGBitmapContextGetBytesPerRow(CGContextRef context);
size_t CGBitmapContextGetBitsPerPixel(CGContextRef context);
CGImageAlphaInfo CGBitmapContextGetAlphaInfo(CGContextRef context);

#if defined(__APPLE__)
// These a host calls.
CFURLRef CFURLCreateFromFileSystemRepresentation(CFAllocatorRef allocator, const uint8_t* path, CFIndex size,
                                                 Boolean is_directory);
Boolean CFURLGetFSRef(CFURLRef url, struct FSRef* reference);
CGColorSpaceRef CGColorSpaceCreateDeviceRGB(void);
void CGColorSpaceRelease(CGColorSpaceRef space);
CGContextRef CGBitmapContextCreate(void* data, size_t width, size_t height, size_t bits_per_component,
                                   size_t bytes_per_row, CGColorSpaceRef space, uint32_t bitmap_info);
void CGContextRelease(CGContextRef context);
#endif

#if defined(__cplusplus)
}
#endif

#endif
