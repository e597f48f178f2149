#pragma once

// The Core Foundation calls that turn a file-system reference into a path. On macOS they are the framework's
// own; elsewhere this is a small stand-in with the same names and ownership: what a Create or Copy call
// returns carries one reference for the caller, and is null when it cannot be made. Except where said,
// arguments must not be null.

#include "platform/host_platform.h"

#if !defined(__APPLE__)

#include <cstddef>
#include <cstdint>

// A string in UTF-16 units, or the URL of a file, which here is its path as such a string.
struct CFText;
using CFTypeRef = const CFText*;
using CFStringRef = const CFText*;
using CFMutableStringRef = CFText*;
using CFURLRef = const CFText*;

using CFAllocatorRef = const void*;  // not looked at; may be null
using CFIndex = ptrdiff_t;
using UniChar = uint16_t;
using Boolean = unsigned char;
enum CFStringEncoding : uint32_t { kCFStringEncodingUTF8 = 0x08000100 };
enum CFStringNormalizationForm : CFIndex { kCFStringNormalizationFormD = 0 };
enum CFURLPathStyle : CFIndex { kCFURLPOSIXPathStyle = 0 };

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

CFURLRef CFURLCreateFromFSRef(CFAllocatorRef allocator, const FSRef* reference);
CFURLRef CFURLCreateCopyAppendingPathComponent(CFAllocatorRef allocator, CFURLRef url, CFStringRef component,
                                               Boolean is_directory);
CFStringRef CFURLCopyFileSystemPath(CFURLRef url, CFURLPathStyle style);

#endif
