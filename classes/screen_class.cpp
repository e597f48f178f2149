#include "classes/screen_class.h"

#include "classes/palette_class.h"

REALclassDefinition GifScreenClass = ClassRecord<GifScreenInstance>("GifScreenZKV", screen::GifScreenDestructor);

namespace screen {

using Instance = GifScreenInstance;

REALobjectStruct* GetGifPalette(REALobjectStruct* self, int64_t) {
  return GetObject<GifPaletteInstance, &GifScreen::cmap, &Instance::palette>(self);
}
void SetGifPalette(REALobjectStruct* self, int64_t, REALobjectStruct* palette) {
  SetStored<&Instance::palette>(self, palette);
}

REALobjectStruct* CloneGifScreenZKV(REALobjectStruct* source) {
  ObjectRef copy = NewCopyOf<Instance>(source);
  if (!copy) return nullptr;
  Instance* to = DataOf<Instance>(copy.get());
  Fields::Copy(*DataOf<Instance>(source), to);
  to->palette = CloneChild(GetGifPalette(source, 0), palette::CloneGifPaletteZKV);
  return copy.Detach();
}

void GifScreenDestructor(REALobjectStruct* self) {
  Instance* data = DataOf<Instance>(self);
  ReleaseView(data);
  ClearField(data->palette);
}

}  // namespace screen
