#pragma once

// What of Core Foundation and Core Graphics is called on macOS: from the frameworks' headers, or declared here where
// a tool chain has none. Same names, forms and layouts. C and C++ can include it.

#if __has_include(<CoreServices/CoreServices.h>)
#include <CoreFoundation/CoreFoundation.h>
#include <CoreGraphics/CoreGraphics.h>
#include <CoreServices/CoreServices.h>
#else

#include <stddef.h>
#include <stdint.h>

// A file or folder.
typedef struct FSRef {
  uint8_t hidden[80];
} FSRef;

// The last part of a path, in UTF-16 units.
typedef struct HFSUniStr255 {
  uint16_t length;        // units in use, 1 to 255
  uint16_t unicode[255];  // not terminated
} HFSUniStr255;

typedef const struct CFAllocator* CFAllocatorRef;
typedef const void* CFTypeRef;
typedef const struct CFText* CFStringRef;
typedef struct CFText* CFMutableStringRef;
typedef const struct CFUrl* CFURLRef;
typedef long CFIndex;
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

// These a host calls.
CFURLRef CFURLCreateFromFileSystemRepresentation(CFAllocatorRef allocator, const uint8_t* path, CFIndex size,
                                                 Boolean is_directory);
Boolean CFURLGetFSRef(CFURLRef url, FSRef* reference);
CGColorSpaceRef CGColorSpaceCreateDeviceRGB(void);
void CGColorSpaceRelease(CGColorSpaceRef space);
CGContextRef CGBitmapContextCreate(void* data, size_t width, size_t height, size_t bits_per_component,
                                   size_t bytes_per_row, CGColorSpaceRef space, uint32_t bitmap_info);
void CGContextRelease(CGContextRef context);

#if defined(__cplusplus)
}
#endif

#endif

#include <assert.h>
static_assert(sizeof(FSRef) == 80, "file");
