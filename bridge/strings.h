#pragma once

// Bytes as host strings, and back. What is returned carries one reference for the caller.

#include <cstdint>

#include "bridge/host_reference.h"

// A string of the bytes, declared to be in that encoding. Null for null bytes, a length below 1 or above 2^31 - 1,
// and when the host makes none. No internal exception occurs in it.
REALstringStruct* BuildEncodedString(const char* bytes, int64_t length, TextEncoding encoding);

// A string's bytes, reached for as long as this lives: it holds a reference on the string.
class StringContents {
 public:
  // `string` is borrowed; null gives no bytes.
  explicit StringContents(REALstringStruct* string);

  const char* bytes() const { return bytes_; }  // may contain zero bytes; null when they cannot be reached
  int64_t length() const { return length_; }    // bytes; 0 when `bytes` is null

 private:
  StringRef string_;
  const char* bytes_ = nullptr;
  int64_t length_ = 0;
};

// The host's own byte length of a string; 0 for null.
int64_t StringByteLength(REALstringStruct* string);
