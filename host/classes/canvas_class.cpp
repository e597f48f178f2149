// The class "Canvas", as scripts see it.

#include <algorithm>
#include <stdexcept>

#include "host/classes/animation_screen.h"
#include "host/classes/host_classes.h"
#include "host/classes/native.h"
#include "host/classes/picture_colors.h"
#include "host/core/text.h"
#include "host/host/memory_block.h"
#include "host/host/string.h"

namespace host {
namespace {

void ConstructSmaller(REALobjectStruct* self, int64_t width, int64_t height, int64_t shown_width,
                      int64_t shown_height) {
  if (Self<AnimationScreen>(self)->Create(width, height, shown_width, shown_height)) return;
  throw std::runtime_error(Text("A canvas of ", width, " by ", height, " pixels can't be made."));
}

void Construct(REALobjectStruct* self, int64_t width, int64_t height) {
  ConstructSmaller(self, width, height, width, height);
}

int64_t GetWidth(REALobjectStruct* self, int64_t) { return Self<AnimationScreen>(self)->width(); }
int64_t GetHeight(REALobjectStruct* self, int64_t) { return Self<AnimationScreen>(self)->height(); }

int8_t GetIsFull(REALobjectStruct* self, int64_t) {
  const std::span<const uint32_t> values = Self<AnimationScreen>(self)->values();
  return std::ranges::find(values, AnimationScreen::kNothing) == values.end() ? 1 : 0;
}

void Draw(REALobjectStruct* self, REALmemoryBlockStruct* pixels, int64_t left, int64_t top, int64_t width,
          int64_t height, REALstringStruct* values, int64_t transparent) {
  const auto* block = Self<MemoryBlock>(pixels);
  const auto* list = Self<String>(values);
  if (block == nullptr || list == nullptr || width < 1 || height < 1) return;
  Self<AnimationScreen>(self)->Draw(
      {reinterpret_cast<const uint8_t*>(block->bytes()), static_cast<size_t>(block->size())},
      {left, top, width, height}, ColorsOf(list->bytes()), transparent);
}

void Fill(REALobjectStruct* self, int64_t left, int64_t top, int64_t width, int64_t height, int64_t value) {
  Self<AnimationScreen>(self)->Fill({left, top, width, height}, static_cast<uint32_t>(value));
}

void Save(REALobjectStruct* self) { Self<AnimationScreen>(self)->Save(); }
void Restore(REALobjectStruct* self) { Self<AnimationScreen>(self)->Restore(); }

REALpictureStruct* ToPicture(REALobjectStruct* self) {
  return HandOut<REALpictureStruct>(Self<AnimationScreen>(self)->ToPicture(Host::Current()));
}

REALmemoryBlockStruct* Indexes(REALobjectStruct* self, int64_t nothing) {
  const std::span<const uint32_t> values = Self<AnimationScreen>(self)->values();
  const Ref<MemoryBlock> block = NewMemoryBlock(Host::Current(), values.size());
  for (size_t i = 0; i < values.size(); ++i) {
    const auto value = values[i] == AnimationScreen::kNothing ? static_cast<uint32_t>(nothing) : values[i];
    block->bytes()[i] = static_cast<std::byte>(value);
  }
  return HandOut<REALmemoryBlockStruct>(block);
}

}  // namespace

void AddCanvasClass(Host& host) {
  const REALproperty properties[] = {
      PropertyRow("Width", "Integer", Native<GetWidth>),
      PropertyRow("Height", "Integer", Native<GetHeight>),
      PropertyRow("IsFull", "Boolean", Native<GetIsFull>),
  };
  const REALmethodDefinition methods[] = {
      MethodRow("Constructor(width as Integer, height as Integer)", Native<Construct>),
      MethodRow("Constructor(width as Integer, height as Integer, shown_width as Integer, shown_height as Integer)",
                Native<ConstructSmaller>),
      MethodRow("Draw(pixels as MemoryBlock, left as Integer, top as Integer, width as Integer, "
                "height as Integer, values as String, transparent as Integer = -1)",
                Native<Draw>),
      MethodRow("Fill(left as Integer, top as Integer, width as Integer, height as Integer, value as Integer = -1)",
                Native<Fill>),
      MethodRow("Save()", Native<Save>),
      MethodRow("Restore()", Native<Restore>),
      MethodRow("Picture() as Picture", Native<ToPicture>),
      MethodRow("Indexes(nothing as Integer = 0) as MemoryBlock", Native<Indexes>),
  };
  AddMembers(host.AddClass("Canvas", MakeInstance<AnimationScreen>), properties, methods);
}

}  // namespace host
