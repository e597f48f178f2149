#include "entry/document_assembly.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "bridge/memory_blocks.h"
#include "bridge/strings.h"
#include "classes/block_class.h"
#include "classes/data_class.h"
#include "classes/extension_class.h"
#include "classes/palette_class.h"
#include "classes/picture_class.h"
#include "classes/screen_class.h"
#include "codec/memory.h"
#include "entry/document_holder.h"

namespace {

// A new array with room for every entry of the list; null without entries and without memory.
template <typename Record>
Record** RoomFor(const ObjectList* list) {
  const int64_t entries = CountOf(list);
  if (entries < 1 || entries > std::numeric_limits<int32_t>::max()) return nullptr;
  return NewRecord<Record*>(static_cast<size_t>(entries));
}

// A new array of what `make` gives for each object in the list, null results left out; `count` tells how
// many.
template <typename Instance, typename Record>
Record** Collect(const ObjectList* list, Record* (*make)(const Instance&), int32_t& count) {
  count = 0;
  Record** records = RoomFor<Record>(list);
  for (int64_t i = 0; records && i < CountOf(list); ++i) {
    const ObjectRef object = ObjectRef::Share(ObjectAt(list, i));
    Record* record = object ? make(*DataOf<Instance>(object.get())) : nullptr;
    if (record) records[count++] = record;
  }
  return records;
}

// A palette of the object's entries; null when `object` is.
GifPalette* CopyPalette(REALobjectStruct* object) {
  if (!object) return nullptr;
  const auto& source = *DataOf<GifPaletteInstance>(object);
  GifPalette* palette =
      NewPalette(static_cast<int32_t>(std::clamp<HostInteger>(source.count, 0, GifPaletteInstance::kRoom)));
  if (palette) std::copy_n(source.colours, palette->count, palette->colours);
  return palette;
}

void CopyScreen(const GifScreenInstance& source, GifScreen* screen) {
  screen::Fields::Assemble(source, screen);
  DeletePalette(screen->cmap);
  screen->cmap = CopyPalette(source.palette);
  if (source.palette && !screen->cmap) screen->has_cmap = 0;  // what follows would be taken for the table
}

// At most six characters, over the start of the header that is there.
void CopyHeader(REALstringStruct* source, char* header) {
  const StringContents text(source);
  if (text.length() > 0) std::strncpy(header, text.bytes(), static_cast<size_t>(std::min<int64_t>(text.length(), 6)));
}

// The picture reads what the MemoryBlock holds of its rows where it stands: the script's object keeps it.
void BorrowPixels(REALmemoryBlockStruct* source, GifPicture* picture) {
  picture->pixels = static_cast<const uint8_t*>(MyREALMemoryBlockGetPtr(source));
  picture->pixel_count = picture->pixels ? MemoryBlockSize(source) : 0;
}

GifPicture* AssemblePicture(const GifPictureInstance& source) {
  GifPicture* picture = NewRecord<GifPicture>();
  if (!picture) return nullptr;
  picture::Fields::Assemble(source, picture);
  picture->cmap = CopyPalette(source.palette);
  if (source.palette && !picture->cmap) {
    DeletePicture(picture);
    return nullptr;
  }
  BorrowPixels(source.pixel_block, picture);
  return picture;
}

GifData* AssembleData(const GifDataInstance& source) {
  const StringContents contents(source.data_string);
  if (contents.length() < 1 || contents.length() > std::numeric_limits<int32_t>::max()) return nullptr;
  const auto length = static_cast<size_t>(contents.length());
  GifData* data = NewRecord<GifData>();
  if (data) data->bytes = NewRecord<uint8_t>(length);
  if (!data || !data->bytes) {
    DeleteGifData(data);
    return nullptr;
  }
  std::memcpy(data->bytes, contents.bytes(), length);
  data->length = static_cast<int32_t>(length);
  return data;
}

GifExtension* AssembleExtension(const GifExtensionInstance& source) {
  GifExtension* extension = NewRecord<GifExtension>();
  if (!extension) return nullptr;
  extension::Fields::Assemble(source, extension);
  extension->data = Collect(source.items, AssembleData, extension->count);
  return extension;
}

// Null also when the block should have a picture or an extension for which there is no memory: its introducer
// alone would spoil what follows.
GifBlock* AssembleBlock(const GifBlockInstance& source) {
  GifBlock* block = NewRecord<GifBlock>();
  if (!block) return nullptr;
  block::Fields::Assemble(source, block);
  if (source.picture) block->picture = AssemblePicture(*DataOf<GifPictureInstance>(source.picture));
  if (source.extension) block->extension = AssembleExtension(*DataOf<GifExtensionInstance>(source.extension));
  const bool complete = (block->picture || !source.picture) && (block->extension || !source.extension);
  if (complete) return block;
  DeleteGifBlock(block);
  return nullptr;
}

}  // namespace

Gif* AssembleDocument(const GifInstance& source) {
  DocumentHolder gif(NewGif());
  if (!gif) return nullptr;
  if (source.screen) CopyScreen(*DataOf<GifScreenInstance>(source.screen), gif->screen);
  CopyHeader(source.header, gif->header);
  gif->blocks = Collect(source.blocks, AssembleBlock, gif->count);
  return gif.release();
}
