#pragma once

// The model that all seven script classes share.
//
// An instance is in one of two modes for its whole life. Attached: a view, `record` points into a document that the
// `GIFZKV` instance `owner` owns, and the instance holds one reference on that owner, so the document outlives every
// view of it. Free-standing: `record` and `owner` are null and the fields below them are the values. Setters write
// those fields whatever the mode; getters prefer the record. So attached instances are read-only in effect, and a
// script edits a document by cloning it.
//
// The host allocates instance data zero-filled, with the sizes given at registration, and the field order is fixed:
// new-made instances are free-standing with default values. Object, string and MemoryBlock fields hold one host
// reference each while not null.

#include <cstdint>

#include "bridge/host_reference.h"
#include "classes/object_list.h"
#include "codec/document.h"

using HostInteger = int64_t;

// The definitions that instances are registered with; the host writes each one's instance offset.
extern REALclassDefinition GifClass;
extern REALclassDefinition GifPictureClass;
extern REALclassDefinition GifDataClass;
extern REALclassDefinition GifBlockClass;
extern REALclassDefinition GifScreenClass;
extern REALclassDefinition GifPaletteClass;
extern REALclassDefinition GifExtensionClass;

struct GifInstance {
  using Record = Gif;
  Gif* record;         // owned, unlike in the other classes; released by the destructor alone
  ObjectList* blocks;  // of GifBlockZKV; null until the first Add
  REALobjectStruct* screen;
  REALstringStruct* header;
};

struct GifScreenInstance {
  using Record = GifScreen;
  GifScreen* record;
  REALobjectStruct* owner;
  HostInteger width;
  HostInteger height;
  HostInteger color_res;
  HostBoolean sorted;
  HostInteger cmap_depth;
  HostInteger bgcolour;
  HostInteger has_cmap;  // a boolean in its lowest byte
  HostInteger aspect;
  REALobjectStruct* palette;
};

struct GifPaletteInstance {
  using Record = GifPalette;
  static constexpr int32_t kRoom = 256;
  GifPalette* record;
  REALobjectStruct* owner;
  HostInteger count;      // entries that count as the table, 0 to 256
  Colour colours[kRoom];  // all of them can be read and written, whatever `count`
};

struct GifBlockInstance {
  using Record = GifBlock;
  GifBlock* record;
  REALobjectStruct* owner;
  HostInteger intro;
  REALobjectStruct* extension;
  REALobjectStruct* picture;
};

struct GifPictureInstance {
  using Record = GifPicture;
  GifPicture* record;
  REALobjectStruct* owner;
  HostInteger left;
  HostInteger top;
  HostInteger width;
  HostInteger height;
  HostBoolean sorted;
  HostInteger cmap_depth;
  HostBoolean interlace;
  HostInteger has_cmap;  // a boolean in its lowest byte
  REALobjectStruct* palette;
  REALmemoryBlockStruct* pixel_block;  // rows of `width` bytes, top row first, back to back
};

struct GifExtensionInstance {
  using Record = GifExtension;
  GifExtension* record;
  REALobjectStruct* owner;
  HostInteger marker;
  ObjectList* items;  // of GifDataZKV; null until the first Add
};

struct GifDataInstance {
  using Record = GifData;
  GifData* record;
  REALobjectStruct* owner;
  REALstringStruct* data_string;  // the sub-block's bytes
};

static_assert(sizeof(GifInstance) == 32 && sizeof(GifScreenInstance) == 88 && sizeof(GifPaletteInstance) == 1048);
static_assert(sizeof(GifBlockInstance) == 40 && sizeof(GifPictureInstance) == 96);
static_assert(sizeof(GifExtensionInstance) == 32 && sizeof(GifDataInstance) == 24);

// The definition that an instance type is registered with.
template <typename Instance>
REALclassDefinition& DefinitionOf();
// clang-format off
template <> inline REALclassDefinition& DefinitionOf<GifInstance>() { return GifClass; }
template <> inline REALclassDefinition& DefinitionOf<GifScreenInstance>() { return GifScreenClass; }
template <> inline REALclassDefinition& DefinitionOf<GifPaletteInstance>() { return GifPaletteClass; }
template <> inline REALclassDefinition& DefinitionOf<GifBlockInstance>() { return GifBlockClass; }
template <> inline REALclassDefinition& DefinitionOf<GifPictureInstance>() { return GifPictureClass; }
template <> inline REALclassDefinition& DefinitionOf<GifExtensionInstance>() { return GifExtensionClass; }
template <> inline REALclassDefinition& DefinitionOf<GifDataInstance>() { return GifDataClass; }
// clang-format on

// The instance data of an object of that class, which must not be null.
template <typename Instance>
Instance* DataOf(REALobjectStruct* object) {
  return reinterpret_cast<Instance*>(reinterpret_cast<char*>(object) + DefinitionOf<Instance>().instance_offset);
}

// A new free-standing instance of the class; empty when the host makes none.
template <typename Instance>
ObjectRef NewInstance() {
  return ObjectRef::Adopt(REALnewInstance(DefinitionOf<Instance>().name));
}

// A new view of a record in the document of `owner` (borrowed; may be null); empty when the host makes none.
template <typename Instance>
ObjectRef NewView(typename Instance::Record* record, REALobjectStruct* owner) {
  ObjectRef view = NewInstance<Instance>();
  if (view) {
    DataOf<Instance>(view.get())->record = record;
    StoreField(DataOf<Instance>(view.get())->owner, owner);
  }
  return view;
}

// The owner that views made from this instance get: a document is the owner of its own views.
template <typename Instance>
REALobjectStruct* OwnerOfViews(REALobjectStruct* self) {
  return DataOf<Instance>(self)->owner;
}
template <>
inline REALobjectStruct* OwnerOfViews<GifInstance>(REALobjectStruct* self) {
  return self;
}
