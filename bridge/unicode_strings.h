#pragma once

// Text of any encoding as host strings.

#include <cstdint>

#include "bridge/host_functions.h"

// A string of the bytes, in the given encoding; UTF-16 and UTF-32 text comes out as UTF-8. Null for null bytes or a
// length below 1 or above 2^31 - 1. An internal exception on the way is raised as a host exception.
REALstringStruct* REALBuildUnicodeString(const char* bytes, int64_t length, TextEncoding encoding);
REALstringStruct* REALBuildUnicodeStringUTF16(const char* bytes, int64_t byte_length);
