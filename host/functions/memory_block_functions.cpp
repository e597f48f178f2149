// The host functions for MemoryBlocks.

#include "host/functions/host_call.h"
#include "host/functions/host_functions.h"
#include "host/host/memory_block.h"

namespace host {
namespace {

REALmemoryBlockStruct* newMemoryBlock(int32_t size) {
  HostCall call("newMemoryBlock", size);
  Host& host = call.host();
  const Ref<MemoryBlock> block = host.Make<MemoryBlock>("MemoryBlock");
  if (call.fails() || !block->Resize(size, host.options().largest_block)) return nullptr;
  return call.HandOut<REALmemoryBlockStruct>(block);
}

void* memoryBlockGetPtr(REALmemoryBlockStruct* block) {
  HostCall call("memoryBlockGetPtr", block);
  const MemoryBlock* found = call.Find<MemoryBlock>(block);
  return call.fails() || found == nullptr ? nullptr : found->bytes();
}

int64_t memoryBlockGetSize(REALmemoryBlockStruct* block) {
  HostCall call("memoryBlockGetSize", block);
  const MemoryBlock* found = call.Find<MemoryBlock>(block);
  return call.Result(found == nullptr ? int64_t{0} : found->size());
}

}  // namespace

std::span<const HostFunction> MemoryBlockFunctions() {
  static const HostFunction functions[] = {
      Offered<newMemoryBlock>("newMemoryBlock"),
      Offered<memoryBlockGetPtr>("memoryBlockGetPtr"),
      Offered<memoryBlockGetSize>("memoryBlockGetSize"),
  };
  return functions;
}

}  // namespace host
