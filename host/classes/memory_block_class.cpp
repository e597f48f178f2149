// The class "MemoryBlock", as scripts and the plugin see it.

#include <cstring>

#include "host/classes/host_classes.h"
#include "host/classes/native.h"
#include "host/core/text.h"
#include "host/host/errors.h"
#include "host/host/memory_block.h"

namespace host {
namespace {

void Resize(MemoryBlock& block, int64_t size) {
  if (block.Resize(size, Host::Current().options().largest_block)) return;
  throw RaisedException("OutOfMemoryException", Text("A MemoryBlock of ", size, " bytes can't be made."));
}

void Construct(REALobjectStruct* self, int64_t size) { Resize(*Self<MemoryBlock>(self), size); }

void ConstructFromString(REALobjectStruct* self, REALstringStruct* bytes) {
  auto& block = *Self<MemoryBlock>(self);
  const String* source = Self<String>(bytes);
  if (source == nullptr) return;
  Resize(block, static_cast<int64_t>(source->bytes().size()));
  if (block.size() > 0) std::memcpy(block.bytes(), source->bytes().data(), source->bytes().size());
}

void* ConvertToPointer(REALobjectStruct* self) { return Self<MemoryBlock>(self)->bytes(); }

int64_t GetSize(REALobjectStruct* self, int64_t) { return Self<MemoryBlock>(self)->size(); }

void SetSize(REALobjectStruct* self, int64_t, int64_t size) { Resize(*Self<MemoryBlock>(self), size); }

void RequireInside(const MemoryBlock& block, int64_t offset, int64_t count) {
  if (offset >= 0 && count >= 0 && offset <= block.size() && count <= block.size() - offset) return;
  throw RaisedException("OutOfBoundsException",
                        Text("Byte ", offset, " of a MemoryBlock of ", block.size(), " bytes, ", count, " wanted."));
}

int64_t GetByte(REALobjectStruct* self, int64_t offset) {
  const auto& block = *Self<MemoryBlock>(self);
  RequireInside(block, offset, 1);
  return std::to_integer<int64_t>(block.bytes()[offset]);
}

void SetByte(REALobjectStruct* self, int64_t offset, int64_t value) {
  const auto& block = *Self<MemoryBlock>(self);
  RequireInside(block, offset, 1);
  block.bytes()[offset] = static_cast<std::byte>(value);
}

// A negative length goes to the end.
REALstringStruct* GetString(REALobjectStruct* self, int64_t offset, int64_t length) {
  const auto& block = *Self<MemoryBlock>(self);
  if (length < 0 && offset >= 0 && offset <= block.size()) length = block.size() - offset;
  RequireInside(block, offset, length);
  if (length == 0) return StringResult("");
  return StringResult({reinterpret_cast<const char*>(block.bytes() + offset), static_cast<size_t>(length)});
}

int8_t EqualBytes(REALobjectStruct* self, REALmemoryBlockStruct* other) {
  const auto& block = *Self<MemoryBlock>(self);
  const auto* second = Self<MemoryBlock>(other);
  if (second == nullptr || block.size() != second->size()) return 0;
  return block.size() == 0 || std::memcmp(block.bytes(), second->bytes(), static_cast<size_t>(block.size())) == 0;
}

}  // namespace

void AddMemoryBlockClass(Host& host) {
  const REALproperty properties[] = {PropertyRow("Size", "Integer", Native<GetSize>, Native<SetSize>)};
  const REALmethodDefinition methods[] = {
      MethodRow("Constructor(bytes as Integer)", Native<Construct>),
      MethodRow("Constructor(data as String)", Native<ConstructFromString>),
      MethodRow("Operator_Convert() As Ptr", Native<ConvertToPointer>),
      MethodRow("Byte(offset as Integer) as Integer", Native<GetByte>, Native<SetByte>),
      MethodRow("String(offset as Integer = 0, length as Integer = -1) as String", Native<GetString>),
      MethodRow("Equals(other as MemoryBlock) as Boolean", Native<EqualBytes>),
  };
  AddMembers(host.AddClass("MemoryBlock", MakeInstance<MemoryBlock>), properties, methods);
}

}  // namespace host
