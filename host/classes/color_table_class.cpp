// The class "ColorTable", as scripts see it.

#include <cstring>
#include <new>

#include "host/classes/color_table.h"
#include "host/core/text.h"
#include "host/host/memory_block.h"
#include "host/classes/native.h"

namespace host {
namespace {

void RaiseOutOfMemory() { Host::Current().Raise("OutOfMemoryException", "There is no memory for a colour table."); }

// What a handler gives, or `failed` with an exception raised when memory runs out.
template <class Result, class F>
Result Try(Result failed, F f) {
  try {
    return f();
  } catch (const std::bad_alloc&) {
    RaiseOutOfMemory();
    return failed;
  }
}

void Construct(REALobjectStruct* self, int64_t most) {
  if (most >= 2 && most <= ColorTable::kMost) return Self<ColorTable>(self)->set_most(static_cast<int>(most));
  Host::Current().Raise("OutOfBoundsException", Text("A table of ", most, " colours; 2 to 256 are possible."));
}

void Add(REALobjectStruct* self, REALpictureStruct* image) {
  const Picture* picture = Self<Picture>(image);
  if (picture == nullptr) return;
  if (Try(true, [&] { return Self<ColorTable>(self)->Add(*picture); })) return;
  Host::Current().Raise("RuntimeException", "The colour table is in use; no picture can be added.");
}

int64_t GetCount(REALobjectStruct* self, int64_t) {
  return Try<int64_t>(0, [&] { return Self<ColorTable>(self)->count(); });
}

int64_t GetTransparent(REALobjectStruct* self, int64_t) {
  return Try<int64_t>(-1, [&] { return Self<ColorTable>(self)->transparent(); });
}

uint32_t GetValue(REALobjectStruct* self, int64_t index) {
  const int64_t count = GetCount(self, 0);
  if (index >= 0 && index < count) return Self<ColorTable>(self)->color(static_cast<int>(index));
  Host::Current().Raise("OutOfBoundsException", Text("Colour ", index, " of a table of ", count, "."));
  return 0;
}

REALobjectStruct* GetIndexes(REALobjectStruct* self, REALpictureStruct* image) {
  const Picture* picture = Self<Picture>(image);
  if (picture == nullptr) return nullptr;
  return Try<REALobjectStruct*>(nullptr, [&] {
    const std::vector<uint8_t> indexes = Self<ColorTable>(self)->Indexes(*picture);
    Host& host = Host::Current();
    const Ref<MemoryBlock> block = host.heap().Make<MemoryBlock>(host.RequireClass("MemoryBlock"));
    if (!block->Resize(static_cast<int64_t>(indexes.size()))) throw std::bad_alloc();
    if (!indexes.empty()) std::memcpy(block->bytes(), indexes.data(), indexes.size());
    return Result(block);
  });
}

Ref<Object> MakeEmpty(Heap& heap, const Class& own_class) { return heap.Make<ColorTable>(own_class); }

}  // namespace

void AddColorTableClass(Host& host) {
  const REALproperty properties[] = {
      NativeProperty("Count", "Integer", Proc(GetCount)),
      NativeProperty("Transparent", "Integer", Proc(GetTransparent)),
  };
  const REALmethodDefinition methods[] = {
      NativeMethod("Constructor(most as Integer = 256)", Proc(Construct)),
      NativeMethod("Add(image as Picture)", Proc(Add)),
      NativeMethod("Value(index as Integer) as Color", Proc(GetValue)),
      NativeMethod("Indexes(image as Picture) as MemoryBlock", Proc(GetIndexes)),
  };
  AddMembers(host.AddClass("ColorTable", MakeEmpty), properties, methods);
}

}  // namespace host
