#include "classes/palette_class.h"

#include <algorithm>

REALclassDefinition GifPaletteClass = ClassRecord<GifPaletteInstance>("GifPaletteZKV", palette::GifPaletteDestructor);

namespace palette {

using Instance = GifPaletteInstance;

void SetCount(REALobjectStruct* self, int64_t, int64_t value) {
  if (value < 0 || value > Instance::kRoom) {
    return RaiseOutOfBoundsException(value, Instance::kRoom + 1, "value", "count");
  }
  Count::Set(self, value);
}

static bool IsIndex(int64_t index, int64_t count, const char* method_name) {
  if (index >= 0 && index < count) return true;
  RaiseOutOfBoundsException(index, count, "index", method_name);
  return false;
}

// The entry, or black when `index` is outside the table: the exception is then raised.
static Colour ReadEntry(REALobjectStruct* self, int64_t index, const char* method_name) {
  const Instance* data = DataOf<Instance>(self);
  const int64_t count = data->record ? data->record->count : Instance::kRoom;
  if (!IsIndex(index, count, method_name)) return {};
  return data->record ? data->record->colours[index] : data->colours[index];
}

static void WriteComponent(REALobjectStruct* self, int64_t index, uint8_t Colour::*component, int64_t value,
                           const char* method_name) {
  if (!IsIndex(index, Instance::kRoom, method_name)) return;
  DataOf<Instance>(self)->colours[index].*component = static_cast<uint8_t>(value);
}

int64_t GetPRed(REALobjectStruct* self, int64_t index) { return ReadEntry(self, index, "red").red; }
int64_t GetPGreen(REALobjectStruct* self, int64_t index) { return ReadEntry(self, index, "green").green; }
int64_t GetPBlue(REALobjectStruct* self, int64_t index) { return ReadEntry(self, index, "blue").blue; }

void SetPRed(REALobjectStruct* self, int64_t index, int64_t value) {
  WriteComponent(self, index, &Colour::red, value, "red");
}
void SetPGreen(REALobjectStruct* self, int64_t index, int64_t value) {
  WriteComponent(self, index, &Colour::green, value, "green");
}
void SetPBlue(REALobjectStruct* self, int64_t index, int64_t value) {
  WriteComponent(self, index, &Colour::blue, value, "blue");
}

uint32_t GetPColor(REALobjectStruct* self, int64_t index) {
  const Colour entry = ReadEntry(self, index, "value");
  return static_cast<uint32_t>(entry.red << 16 | entry.green << 8 | entry.blue);
}
void SetPColor(REALobjectStruct* self, int64_t index, uint32_t colour) {
  Colour& entry = DataOf<Instance>(self)->colours[static_cast<uint8_t>(index)];
  entry.red = static_cast<uint8_t>(colour >> 16);
  entry.green = static_cast<uint8_t>(colour >> 8);
  entry.blue = static_cast<uint8_t>(colour);
}

REALobjectStruct* CloneGifPaletteZKV(REALobjectStruct* source) {
  ObjectRef copy = NewCopyOf<Instance>(source);
  if (!copy) return nullptr;
  const Instance* from = DataOf<Instance>(source);
  Instance* to = DataOf<Instance>(copy.get());
  to->count = std::clamp<HostInteger>(GetCount(source, 0), 0, Instance::kRoom);
  std::copy_n(from->record ? from->record->colours : from->colours, to->count, to->colours);
  return copy.Detach();
}

void GifPaletteDestructor(REALobjectStruct* self) { ReleaseView(DataOf<Instance>(self)); }

}  // namespace palette
