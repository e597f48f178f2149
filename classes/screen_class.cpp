#include "classes/screen_class.h"

#include "classes/palette_class.h"
#include "classes/property.h"

namespace screen {

using Instance = GifScreenInstance;
using Record = Instance::Record;

int64_t GetWidth(REALobjectStruct* self, int64_t) { return GetInteger<&Record::width, &Instance::width>(self); }
void SetWidth(REALobjectStruct* self, int64_t, int64_t value) { SetField<&Instance::width>(self, value); }

int64_t GetHeight(REALobjectStruct* self, int64_t) { return GetInteger<&Record::height, &Instance::height>(self); }
void SetHeight(REALobjectStruct* self, int64_t, int64_t value) { SetField<&Instance::height>(self, value); }

int8_t Gethas_cmap(REALobjectStruct* self, int64_t) {
  return GetBoolean<&Record::has_cmap, &Instance::has_cmap>(self);
}
void Sethas_cmap(REALobjectStruct* self, int64_t, int8_t value) { SetField<&Instance::has_cmap>(self, value); }

int64_t Getcolor_res(REALobjectStruct* self, int64_t) {
  return GetInteger<&Record::color_res, &Instance::color_res>(self);
}
void Setcolor_res(REALobjectStruct* self, int64_t, int64_t value) { SetField<&Instance::color_res>(self, value); }

int8_t Getsorted(REALobjectStruct* self, int64_t) { return GetBoolean<&Record::sorted, &Instance::sorted>(self); }
void Setsorted(REALobjectStruct* self, int64_t, int8_t value) { SetField<&Instance::sorted>(self, value); }

int64_t Getcmap_depth(REALobjectStruct* self, int64_t) {
  return GetInteger<&Record::cmap_depth, &Instance::cmap_depth>(self);
}
void Setcmap_depth(REALobjectStruct* self, int64_t, int64_t value) { SetField<&Instance::cmap_depth>(self, value); }

int64_t Getbgcolour(REALobjectStruct* self, int64_t) {
  return GetInteger<&Record::bgcolour, &Instance::bgcolour>(self);
}
void Setbgcolour(REALobjectStruct* self, int64_t, int64_t value) { SetField<&Instance::bgcolour>(self, value); }

int64_t Getaspect(REALobjectStruct* self, int64_t) { return GetInteger<&Record::aspect, &Instance::aspect>(self); }
void Setaspect(REALobjectStruct* self, int64_t, int64_t value) { SetField<&Instance::aspect>(self, value); }

REALobjectStruct* GetGifPalette(REALobjectStruct* self, int64_t) {
  return GetObject<GifPaletteInstance, &Record::cmap, &Instance::palette>(self);
}
void SetGifPalette(REALobjectStruct* self, int64_t, REALobjectStruct* palette) {
  SetStored<&Instance::palette>(self, palette);
}

REALobjectStruct* CloneGifScreenZKV(REALobjectStruct* source) {
  ObjectRef copy = NewCopyOf<Instance>(source);
  if (!copy) return nullptr;
  Instance* to = DataOf<Instance>(copy.get());
  to->width = GetWidth(source, 0);
  to->height = GetHeight(source, 0);
  to->color_res = Getcolor_res(source, 0);
  to->sorted = Getsorted(source, 0);
  to->cmap_depth = Getcmap_depth(source, 0);
  to->bgcolour = Getbgcolour(source, 0);
  to->has_cmap = Gethas_cmap(source, 0);
  to->aspect = Getaspect(source, 0);
  to->palette = CloneChild(GetGifPalette(source, 0), palette::CloneGifPaletteZKV);
  return copy.Detach();
}

void GifScreenDestructor(REALobjectStruct* self) {
  Instance* data = DataOf<Instance>(self);
  ReleaseView(data);
  ClearField(data->palette);
}

}  // namespace screen
