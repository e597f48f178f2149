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

// Gives an empty palette the object's entries. False without memory.
bool CopyPalette(REALobjectStruct* object, GifPalette* palette) {
  const auto& source = *DataOf<GifPaletteInstance>(object);
  const auto count = static_cast<int32_t>(std::clamp<HostInteger>(source.count, 0, GifPaletteInstance::kRoom));
  if (!MakeColours(palette, count)) return false;
  std::copy_n(source.colours, palette->count, palette->colours);
  return true;
}

void CopyScreen(const GifScreenInstance& source, GifScreen* screen) {
  screen::Fields::Assemble(source, screen);
  if (!source.palette) {
    screen->cmap = nullptr;
  } else if (!CopyPalette(source.palette, screen->cmap)) {
    screen->has_cmap = 0;  // what follows would be taken for the table
  }
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

// False without memory for the palette.
bool AssemblePicture(const GifPictureInstance& source, GifPicture* picture) {
  picture::Fields::Assemble(source, picture);
  if (!source.palette) {
    picture->cmap = nullptr;
  } else if (!CopyPalette(source.palette, picture->cmap)) {
    return false;
  }
  BorrowPixels(source.pixel_block, picture);
  return true;
}

GifData* AssembleData(const GifDataInstance& source) {
  const StringContents contents(source.data_string);
  if (contents.length() < 1 || contents.length() > std::numeric_limits<int32_t>::max()) return nullptr;
  GifData* data = NewGifData(static_cast<int32_t>(contents.length()));
  if (data) std::memcpy(data->bytes, contents.bytes(), static_cast<size_t>(contents.length()));
  return data;
}

void AssembleExtension(const GifExtensionInstance& source, GifExtension* extension) {
  extension::Fields::Assemble(source, extension);
  extension->data = Collect(source.items, AssembleData, extension->count);
}

// Null without memory, also for the picture's palette: the block's introducer alone would spoil what follows.
GifBlock* AssembleBlock(const GifBlockInstance& source) {
  GifBlock* block = NewGifBlock(source.picture != nullptr, source.extension != nullptr);
  if (!block) return nullptr;
  block::Fields::Assemble(source, block);
  if (source.picture && !AssemblePicture(*DataOf<GifPictureInstance>(source.picture), block->picture)) {
    DeleteGifBlock(block);
    return nullptr;
  }
  if (source.extension) AssembleExtension(*DataOf<GifExtensionInstance>(source.extension), block->extension);
  return block;
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
