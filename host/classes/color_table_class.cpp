// The class "ColorTable", as scripts see it.

#include <cstring>
#include <new>
#include <stdexcept>

#include "host/classes/color_table.h"
#include "host/classes/host_classes.h"
#include "host/classes/native.h"
#include "host/core/text.h"
#include "host/host/memory_block.h"

namespace host {
namespace {

void Construct(REALobjectStruct* self, int64_t most) {
  if (most >= 2 && most <= ColorTable::kMost) return Self<ColorTable>(self)->set_most(static_cast<int>(most));
  throw RaisedException("OutOfBoundsException", Text("A table of ", most, " colours; 2 to 256 are possible."));
}

void Add(REALobjectStruct* self, REALpictureStruct* image) {
  const Picture* picture = Self<Picture>(image);
  if (picture == nullptr || Self<ColorTable>(self)->Add(*picture)) return;
  throw std::runtime_error("The colour table is in use; no picture can be added.");
}

int64_t GetCount(REALobjectStruct* self, int64_t) { return Self<ColorTable>(self)->count(); }

int64_t GetTransparent(REALobjectStruct* self, int64_t) { return Self<ColorTable>(self)->transparent(); }

uint32_t GetValue(REALobjectStruct* self, int64_t index) {
  auto& table = *Self<ColorTable>(self);
  if (index >= 0 && index < table.count()) return table.color(static_cast<int>(index));
  throw RaisedException("OutOfBoundsException", Text("Colour ", index, " of a table of ", table.count(), "."));
}

REALmemoryBlockStruct* GetIndexes(REALobjectStruct* self, REALpictureStruct* image) {
  const Picture* picture = Self<Picture>(image);
  if (picture == nullptr) return nullptr;
  const std::vector<uint8_t> indexes = Self<ColorTable>(self)->Indexes(*picture);
  const Ref<MemoryBlock> block = Host::Current().Make<MemoryBlock>("MemoryBlock");
  const auto size = static_cast<int64_t>(indexes.size());
  if (!block->Resize(size, Host::Current().options().largest_block)) throw std::bad_alloc();
  if (!indexes.empty()) std::memcpy(block->bytes(), indexes.data(), indexes.size());
  return HandOut<REALmemoryBlockStruct>(block);
}

}  // namespace

void AddColorTableClass(Host& host) {
  const REALproperty properties[] = {
      PropertyRow("Count", "Integer", Native<GetCount>),
      PropertyRow("Transparent", "Integer", Native<GetTransparent>),
  };
  const REALmethodDefinition methods[] = {
      MethodRow("Constructor(most as Integer = 256)", Native<Construct>),
      MethodRow("Add(image as Picture)", Native<Add>),
      MethodRow("Value(index as Integer) as Color", Native<GetValue>),
      MethodRow("Indexes(image as Picture) as MemoryBlock", Native<GetIndexes>),
  };
  AddMembers(host.AddClass("ColorTable", MakeInstance<ColorTable>), properties, methods);
}

}  // namespace host
