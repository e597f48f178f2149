// The class "Canvas", as scripts see it.

#include <algorithm>
#include <new>
#include <string_view>

#include "host/classes/canvas.h"
#include "host/classes/picture_colors.h"
#include "host/core/text.h"
#include "host/host/memory_block.h"
#include "host/host/native.h"
#include "host/host/string.h"

namespace host {
namespace {

void RaiseNoCanvas(int64_t width, int64_t height) {
  Host::Current().Raise("RuntimeException", Text("A canvas of ", width, " by ", height, " pixels can't be made."));
}

void ConstructSmaller(REALobjectStruct* self, int64_t width, int64_t height, int64_t shown_width,
                      int64_t shown_height) {
  try {
    if (Self<Canvas>(self)->Create(width, height, shown_width, shown_height)) return;
  } catch (const std::bad_alloc&) {
  }
  RaiseNoCanvas(width, height);
}

void Construct(REALobjectStruct* self, int64_t width, int64_t height) {
  ConstructSmaller(self, width, height, width, height);
}

int64_t GetWidth(REALobjectStruct* self, int64_t) { return Self<Canvas>(self)->width(); }
int64_t GetHeight(REALobjectStruct* self, int64_t) { return Self<Canvas>(self)->height(); }

int8_t GetIsFull(REALobjectStruct* self, int64_t) {
  const std::span<const uint32_t> values = Self<Canvas>(self)->values();
  return std::ranges::find(values, Canvas::kNothing) == values.end() ? 1 : 0;
}

void Draw(REALobjectStruct* self, REALobjectStruct* pixels, int64_t left, int64_t top, int64_t width, int64_t height,
          REALstringStruct* values, int64_t transparent) {
  const auto* block = Self<MemoryBlock>(pixels);
  if (block == nullptr || width < 1 || height < 1) return;
  Self<Canvas>(self)->Draw({reinterpret_cast<const uint8_t*>(block->bytes()), static_cast<size_t>(block->size())},
                           {left, top, width, height}, ColorsOf(values), transparent);
}

void Fill(REALobjectStruct* self, int64_t left, int64_t top, int64_t width, int64_t height, int64_t value) {
  Self<Canvas>(self)->Fill({left, top, width, height}, static_cast<uint32_t>(value));
}

void Save(REALobjectStruct* self) {
  try {
    Self<Canvas>(self)->Save();
  } catch (const std::bad_alloc&) {
    RaiseNoCanvas(Self<Canvas>(self)->width(), Self<Canvas>(self)->height());
  }
}

void Restore(REALobjectStruct* self) { Self<Canvas>(self)->Restore(); }

REALobjectStruct* ToPicture(REALobjectStruct* self) {
  const auto& canvas = *Self<Canvas>(self);
  const Ref<Picture> picture = canvas.ToPicture();
  if (!picture) RaiseNoCanvas(canvas.width(), canvas.height());
  return Result(picture);
}

REALobjectStruct* Indexes(REALobjectStruct* self, int64_t nothing) {
  const std::span<const uint32_t> values = Self<Canvas>(self)->values();
  const Ref<MemoryBlock> block = NewMemoryBlock(values.size());
  if (!block) return nullptr;
  for (size_t i = 0; i < values.size(); ++i) {
    const auto value = values[i] == Canvas::kNothing ? static_cast<uint32_t>(nothing) : values[i];
    block->bytes()[i] = static_cast<std::byte>(value);
  }
  return Result(block);
}

Ref<Object> Make(Heap& heap, const Class& own_class) { return heap.Make<Canvas>(own_class); }

}  // namespace

void AddCanvasClass(Host& host) {
  const REALproperty properties[] = {
      NativeProperty("Width", "Integer", Proc(GetWidth)),
      NativeProperty("Height", "Integer", Proc(GetHeight)),
      NativeProperty("IsFull", "Boolean", Proc(GetIsFull)),
  };
  const REALmethodDefinition methods[] = {
      NativeMethod("Constructor(width as Integer, height as Integer)", Proc(Construct)),
      NativeMethod(
          "Constructor(width as Integer, height as Integer, shown_width as Integer, shown_height as Integer)",
          Proc(ConstructSmaller)),
      NativeMethod("Draw(pixels as MemoryBlock, left as Integer, top as Integer, width as Integer, "
                   "height as Integer, values as String, transparent as Integer = -1)",
                   Proc(Draw)),
      NativeMethod(
          "Fill(left as Integer, top as Integer, width as Integer, height as Integer, value as Integer = -1)",
          Proc(Fill)),
      NativeMethod("Save()", Proc(Save)),
      NativeMethod("Restore()", Proc(Restore)),
      NativeMethod("Picture() as Picture", Proc(ToPicture)),
      NativeMethod("Indexes(nothing as Integer = 0) as MemoryBlock", Proc(Indexes)),
  };
  AddMembers(host.AddClass("Canvas", Make), properties, methods);
}

}  // namespace host
