#pragma once

// GifPaletteZKV: a colour table (GIF89a, sections 19 and 21). A free-standing one always has room for 256 entries;
// its count says how many of them are the table. Colours are 0x00RRGGBB.

#include "classes/property.h"

struct GifPaletteInstance {
  using Record = GifPalette;
  static constexpr int32_t kRoom = 256;
  GifPalette* record;
  REALobjectStruct* owner;
  HostInteger count;      // entries that count as the table, 0 to 256
  Colour colours[kRoom];  // all of them can be read and written, whatever `count`
};
static_assert(sizeof(GifPaletteInstance) == 1048);

extern REALclassDefinition GifPaletteClass;
template <>
inline REALclassDefinition& DefinitionOf<GifPaletteInstance>() {
  return GifPaletteClass;
}

namespace palette {

using Count = Number<&GifPalette::count, &GifPaletteInstance::count>;

inline int64_t GetCount(REALobjectStruct* self, int64_t) { return Count::Get(self); }
// 0 to 256, or "OutOfBoundsException" and no change. The entries stay as they are.
void SetCount(REALobjectStruct* self, int64_t, int64_t value);

// Reading an entry raises "OutOfBoundsException" and gives 0 for an index outside an opened table, or outside 0 to
// 255 of a free-standing one.
uint32_t GetPColor(REALobjectStruct* self, int64_t index);
int64_t GetPRed(REALobjectStruct* self, int64_t index);
int64_t GetPGreen(REALobjectStruct* self, int64_t index);
int64_t GetPBlue(REALobjectStruct* self, int64_t index);
// Writes the entry that the low 8 bits of the index name, whatever the index; never raises.
void SetPColor(REALobjectStruct* self, int64_t index, uint32_t colour);
// Store the low 8 bits of the value; "OutOfBoundsException" and no change for an index outside 0 to 255.
void SetPRed(REALobjectStruct* self, int64_t index, int64_t value);
void SetPGreen(REALobjectStruct* self, int64_t index, int64_t value);
void SetPBlue(REALobjectStruct* self, int64_t index, int64_t value);

// Copies the entries that count; the rest of the copy is zero.
REALobjectStruct* CloneGifPaletteZKV(REALobjectStruct* source);

void GifPaletteDestructor(REALobjectStruct* self);

}  // namespace palette
