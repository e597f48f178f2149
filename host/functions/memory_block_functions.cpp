// The host functions for MemoryBlocks.

#include "host/functions/host_call.h"
#include "host/host/memory_block.h"
#include "host/classes/native.h"
#include "host/functions/host_functions.h"

namespace host {
namespace {

REALmemoryBlockStruct* newMemoryBlock(int32_t size) {
  HostCall call("newMemoryBlock", size);
  Host& host = Host::Current();
  const Ref<MemoryBlock> block = host.heap().Make<MemoryBlock>(host.RequireClass("MemoryBlock"));
  if (call.fails() || !block->Resize(size)) return nullptr;
  return call.HandOut<REALmemoryBlockStruct>(block);
}

void* memoryBlockGetPtr(REALmemoryBlockStruct* block) {
  HostCall call("memoryBlockGetPtr", block);
  const MemoryBlock* found = Find<MemoryBlock>(block);
  return call.fails() || found == nullptr ? nullptr : found->bytes();
}

int64_t memoryBlockGetSize(REALmemoryBlockStruct* block) {
  HostCall call("memoryBlockGetSize", block);
  const MemoryBlock* found = Find<MemoryBlock>(block);
  return call.Result(found == nullptr ? int64_t{0} : found->size());
}

}  // namespace

std::span<const HostFunction> MemoryBlockFunctions() {
  static const HostFunction functions[] = {
      {"newMemoryBlock", Proc(newMemoryBlock)},
      {"memoryBlockGetPtr", Proc(memoryBlockGetPtr)},
      {"memoryBlockGetSize", Proc(memoryBlockGetSize)},
  };
  return functions;
}

}  // namespace host
