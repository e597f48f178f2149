#pragma once

// Bytes as host MemoryBlocks, and back. What is returned carries one reference for the caller.

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
