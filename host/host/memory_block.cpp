#include "host/host/memory_block.h"

#include <algorithm>
#include <cstring>

#include "host/core/text.h"
#include "host/classes/native.h"
#include "host/host/string.h"

namespace host {
namespace {

constexpr size_t kGuardSize = 16;
constexpr std::byte kGuardByte{0xA5};

void ResizeOrRaise(MemoryBlock& block, int64_t size) {
  if (block.Resize(size)) return;
  Host::Current().Raise("OutOfMemoryException", Text("A MemoryBlock of ", size, " bytes can't be made."));
}

void Construct(REALobjectStruct* self, int64_t size) { ResizeOrRaise(*Self<MemoryBlock>(self), size); }

void ConstructFromString(REALobjectStruct* self, REALstringStruct* bytes) {
  auto& block = *Self<MemoryBlock>(self);
  const String* source = Self<String>(bytes);
  if (source == nullptr) return;
  ResizeOrRaise(block, static_cast<int64_t>(source->bytes().size()));
  if (block.size() > 0) std::memcpy(block.bytes(), source->bytes().data(), source->bytes().size());
}

const void* ConvertToPointer(REALobjectStruct* self) { return Self<MemoryBlock>(self)->bytes(); }

int64_t GetSize(REALobjectStruct* self, int64_t) { return Self<MemoryBlock>(self)->size(); }

void SetSize(REALobjectStruct* self, int64_t, int64_t size) { ResizeOrRaise(*Self<MemoryBlock>(self), size); }

// Whether `count` bytes from `offset` on lie inside; raises when they don't.
bool CheckRange(const MemoryBlock& block, int64_t offset, int64_t count) {
  if (offset >= 0 && count >= 0 && offset <= block.size() && count <= block.size() - offset) return true;
  Host::Current().Raise("OutOfBoundsException",
                        Text("Byte ", offset, " of a MemoryBlock of ", block.size(), " bytes, ", count, " wanted."));
  return false;
}

int64_t GetByte(REALobjectStruct* self, int64_t offset) {
  const auto& block = *Self<MemoryBlock>(self);
  return CheckRange(block, offset, 1) ? std::to_integer<int64_t>(block.bytes()[offset]) : 0;
}

void SetByte(REALobjectStruct* self, int64_t offset, int64_t value) {
  const auto& block = *Self<MemoryBlock>(self);
  if (CheckRange(block, offset, 1)) block.bytes()[offset] = static_cast<std::byte>(value);
}

REALstringStruct* GetString(REALobjectStruct* self, int64_t offset, int64_t length) {
  const auto& block = *Self<MemoryBlock>(self);
  if (length < 0 && offset <= block.size()) length = block.size() - offset;
  if (!CheckRange(block, offset, length)) return nullptr;
  if (length == 0) return StringResult("");
  return StringResult({reinterpret_cast<const char*>(block.bytes() + offset), static_cast<size_t>(length)});
}

Ref<Object> Make(Heap& heap, const Class& own_class) { return heap.Make<MemoryBlock>(own_class); }

}  // namespace

bool MemoryBlock::Resize(int64_t size) {
  if (size < 0 || size > Host::Current().options().largest_block) return false;
  const size_t wanted = static_cast<size_t>(size);
  Memory grown(static_cast<std::byte*>(std::calloc(1, wanted + kGuardSize)));
  if (!grown) return false;
  CheckGuard();
  if (bytes_) std::memcpy(grown.get(), bytes_.get(), static_cast<size_t>(std::min(size, size_)));
  std::fill_n(grown.get() + wanted, kGuardSize, kGuardByte);
  bytes_ = std::move(grown);
  size_ = size;
  return true;
}

void MemoryBlock::BeforeDeath() { CheckGuard(); }

void MemoryBlock::CheckGuard() const {
  if (!bytes_) return;
  const std::byte* end = bytes_.get() + size_;
  if (!std::all_of(end, end + kGuardSize, [](std::byte b) { return b == kGuardByte; })) {
    Fault(Text("something was written behind the ", size_, " bytes of ", Describe()));
  }
}

void AddMemoryBlockClass(Host& host) {
  const REALproperty properties[] = {NativeProperty("Size", "Integer", Proc(GetSize), Proc(SetSize))};
  const REALmethodDefinition methods[] = {
      NativeMethod("Constructor(bytes as Integer)", Proc(Construct)),
      NativeMethod("Constructor(data as String)", Proc(ConstructFromString)),
      NativeMethod("Operator_Convert() As Ptr", Proc(ConvertToPointer)),
      NativeMethod("Byte(offset as Integer) as Integer", Proc(GetByte), Proc(SetByte)),
      NativeMethod("String(offset as Integer = 0, length as Integer = -1) as String", Proc(GetString)),
  };
  AddMembers(host.AddClass("MemoryBlock", Make), properties, methods);
}

}  // namespace host
