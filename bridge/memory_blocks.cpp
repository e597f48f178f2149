#include "bridge/memory_blocks.h"

#include <atomic>
#include <cstring>
#include <mutex>
#include <new>

#include "bridge/exceptions.h"

// The host's implementation of "Operator_Convert() As Ptr"; null until a load succeeds.
static std::atomic<void*> myMemoryBlockGetPtr = nullptr;

static REALmemoryBlockStruct* AsMemoryBlock(REALobjectStruct* object) {
  return reinterpret_cast<REALmemoryBlockStruct*>(object);
}

int64_t MemoryBlockSize(REALmemoryBlockStruct* block) {
  int64_t size = 0;
  if (block && REALGetPropValueInteger(AsObject(block), "Size", &size)) return size;
  return block ? REALMemoryBlockGetSize(block) : 0;
}

void REALNewMemoryBlockWork(void* request_record) {
  auto* request = static_cast<MemoryBlockRequest*>(request_record);
  auto block = ObjectRef::Adopt(REALnewInstance("MemoryBlock"));
  if (!block) return;

  static std::once_flag loaded;
  static void* constructor = nullptr;
  std::call_once(loaded, [&] { constructor = REALLoadObjectMethod(block.get(), "Constructor(bytes as Integer)"); });
  if (!constructor) return;

  CallOrNeutral<void>(constructor, block.get(), request->size);
  if (MemoryBlockSize(AsMemoryBlock(block.get())) >= request->size) request->result = AsMemoryBlock(block.Detach());
}

MemoryBlockRef NewMemoryBlock(int64_t size) {
  if (size < 0x7FFFFFFF) return MemoryBlockRef::Adopt(REALNewMemoryBlock(static_cast<int32_t>(size)));

  MemoryBlockRequest request = {size, nullptr};
  if (REALCallFunctionWithExceptionHandler) {
    // What comes back is an exception that the host caught, or nothing.
    const auto caught = ObjectRef::Adopt(REALCallFunctionWithExceptionHandler(REALNewMemoryBlockWork, &request));
  } else {
    REALNewMemoryBlockWork(&request);
  }
  return MemoryBlockRef::Adopt(request.result);
}

static void* LoadMemoryBlockGetPtr(REALmemoryBlockStruct* block) {
  const auto temporary = MemoryBlockRef::Adopt(REALNewMemoryBlock(4));
  REALobjectStruct* asked = AsObject(temporary ? temporary.get() : block);
  void* method = REALLoadObjectMethod(asked, "Operator_Convert() As Ptr");
  myMemoryBlockGetPtr.store(method, std::memory_order_release);
  return method;
}

void* MyREALMemoryBlockGetPtr(REALmemoryBlockStruct* block) {
  if (!block) return nullptr;
  void* method = myMemoryBlockGetPtr.load(std::memory_order_acquire);
  if (!method) method = LoadMemoryBlockGetPtr(block);
  return method ? CallOrNeutral<void*>(method, block) : REALMemoryBlockGetPtr(block);
}

static MemoryBlockRef CopyIntoMemoryBlock(const void* bytes, int64_t size) {
  MemoryBlockRef block = NewMemoryBlock(size);
  void* target = MyREALMemoryBlockGetPtr(block.get());
  if (!target) return MemoryBlockRef();
  std::memcpy(target, bytes, static_cast<size_t>(size));
  return block;
}

REALmemoryBlockStruct* REALBuildMemoryblock(const void* bytes, int64_t size) {
  if (!bytes || size < 1) return nullptr;
  try {
    MemoryBlockRef block = CopyIntoMemoryBlock(bytes, size);
    if (block) return block.Detach();
  } catch (const std::bad_alloc&) {
    // Told below, as every other failure is.
  }
  RaiseOutOfMemoryException(size);
  return nullptr;
}
