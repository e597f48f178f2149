#pragma once

// Bytes as host MemoryBlocks and host strings, and back. What is returned carries one reference for the caller.

#include <cstdint>

#include "bridge/host_reference.h"

// A MemoryBlock holding a copy of the bytes; null for null bytes or a size below 1. Raises "OutOfMemoryException" and
// gives null when the host makes none or its bytes cannot be reached.
REALmemoryBlockStruct* REALBuildMemoryblock(const void* bytes, int64_t size);

// A new MemoryBlock of `size` bytes, contents as the host makes them; empty when the host makes none. Never raises.
MemoryBlockRef NewMemoryBlock(int64_t size);

// Makes a MemoryBlock of the requested size through the host's class "MemoryBlock", for sizes that "newMemoryBlock"
// cannot take. `request` is a MemoryBlockRequest; untyped because the host calls it under its exception handling.
struct MemoryBlockRequest {
  int64_t size;
  REALmemoryBlockStruct* result;  // null until made
};
void REALNewMemoryBlockWork(void* request);

// The address of the block's bytes, valid while the block lives; null for null and when the host cannot tell.
void* MyREALMemoryBlockGetPtr(REALmemoryBlockStruct* block);

// The block's size in bytes; 0 when the host cannot tell.
int64_t MemoryBlockSize(REALmemoryBlockStruct* block);

// A string of the bytes, in the given encoding; UTF-16 and UTF-32 text comes out as UTF-8. Null for null bytes or a
// length below 1 or above 2^31 - 1. An internal exception on the way is raised as a host exception.
REALstringStruct* REALBuildUnicodeString(const char* bytes, int64_t length, TextEncoding encoding);
REALstringStruct* REALBuildUnicodeStringUTF16(const char* bytes, int64_t byte_length);

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
