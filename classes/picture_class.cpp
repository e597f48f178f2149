#include "classes/picture_class.h"

#include <algorithm>
#include <cstring>

#include "bridge/memory_blocks.h"
#include "classes/palette_class.h"
#include "codec/picture_rows.h"

REALclassDefinition GifPictureClass = ClassRecord<GifPictureInstance>("GifPictureZKV", picture::GifPictureDestructor);

namespace picture {

using Instance = GifPictureInstance;
using Record = Instance::Record;

REALobjectStruct* GetGifPalette(REALobjectStruct* self, int64_t) {
  return GetObject<GifPaletteInstance, &Record::cmap, &Instance::palette>(self);
}
void SetGifPalette(REALobjectStruct* self, int64_t, REALobjectStruct* palette) {
  SetStored<&Instance::palette>(self, palette);
}

// --- Pixels ------------------------------------------------------------------------------------------------------

// A run of bytes of which only the first `there` exist; the rest read as zeros.
struct Bytes {
  const uint8_t* first;
  int64_t there;
};

// What stands in a block, whose bytes begin at `bytes`, from `offset` on: at most `length` bytes.
static Bytes BytesOf(REALmemoryBlockStruct* block, const void* bytes, int64_t offset, int64_t length) {
  const int64_t behind = bytes ? MemoryBlockSize(block) - offset : 0;
  if (behind <= 0) return {nullptr, 0};
  return {static_cast<const uint8_t*>(bytes) + offset, std::min(behind, length)};
}

// The number of pixels, when a MemoryBlock is made for so many: from 0 to 2^31 - 1. Otherwise -1.
static int64_t PixelCount(int64_t width, int64_t height) {
  const double count = static_cast<double>(width) * static_cast<double>(height);  // exact where it matters
  return count >= 0 && count <= INT32_MAX ? width * height : -1;
}

// Copies the run to `target` and fills up to `size` bytes with zeros.
static void CopyBytes(uint8_t* target, int64_t size, Bytes source) {
  std::copy_n(source.first, source.there, target);
  std::fill_n(target + source.there, size - source.there, uint8_t{0});
}

// A new block of `size` bytes that `fill` writes, all of them, since the host need not clear it. Null for a negative
// size and when the host makes no block. Never raises.
template <typename Fill>
static REALmemoryBlockStruct* NewPixelBlock(int64_t size, Fill fill) {
  if (size < 0) return nullptr;
  MemoryBlockRef block = NewMemoryBlock(size);
  auto* pixels = static_cast<uint8_t*>(MyREALMemoryBlockGetPtr(block.get()));
  if (size > 0 && !pixels) return nullptr;
  if (size > 0) fill(pixels);
  return block.Detach();
}

// All rows of a record, top row first.
static REALmemoryBlockStruct* CopyRows(const Record* record) {
  const int64_t width = record->width;
  bool complete = true;
  auto block = MemoryBlockRef::Adopt(NewPixelBlock(PixelCount(width, record->height), [&](uint8_t* pixels) {
    RowReader rows(record);
    for (int32_t row = 0; complete && row < record->height; ++row) {
      const uint8_t* bytes = rows.Row(row);
      complete = bytes != nullptr;
      if (complete) std::copy_n(bytes, width, pixels + row * width);
    }
  }));
  return complete ? block.Detach() : nullptr;
}

// The block that stands for this picture's pixels, shared with the script; in both modes it wins over the record.
REALmemoryBlockStruct* GetData(REALobjectStruct* self, int64_t) {
  const Instance* data = DataOf<Instance>(self);
  if (!data->pixel_block && data->record) return CopyRows(data->record);
  return GetStored<&Instance::pixel_block>(self);
}
void SetData(REALobjectStruct* self, int64_t, REALmemoryBlockStruct* value) {
  SetStored<&Instance::pixel_block>(self, value);
}

REALmemoryBlockStruct* GetPixelData(REALobjectStruct* self, int64_t row) {
  const Instance* data = DataOf<Instance>(self);
  if (row < 0) return nullptr;
  if (const Record* record = data->record) {
    return REALBuildMemoryblock(RowReader(record).Row(row), record->width);
  }
  if (!data->pixel_block || row >= data->height || data->width < 1) return nullptr;
  const bool far = row > INT64_MAX / data->width;
  const int64_t offset = far ? INT64_MAX : row * data->width;  // far: behind the end of any block
  const void* stored = MyREALMemoryBlockGetPtr(data->pixel_block);
  if (!stored) return nullptr;
  const Bytes bytes = BytesOf(data->pixel_block, stored, offset, data->width);
  const auto fill = [&](uint8_t* pixels) { CopyBytes(pixels, data->width, bytes); };
  REALmemoryBlockStruct* block = NewPixelBlock(data->width, fill);
  if (!block) RaiseOutOfMemoryException(data->width);
  return block;
}

// A stored block is copied in the size that the instance's own fields say, also on an attached picture.
REALmemoryBlockStruct* CopyData(REALobjectStruct* self) {
  const Instance* data = DataOf<Instance>(self);
  if (!data->pixel_block) return GetData(self, 0);
  const int64_t size = PixelCount(data->width, data->height);
  const auto fill = [&](uint8_t* pixels) {
    const void* stored = MyREALMemoryBlockGetPtr(data->pixel_block);
    CopyBytes(pixels, size, BytesOf(data->pixel_block, stored, 0, size));
  };
  return NewPixelBlock(size, fill);
}

REALobjectStruct* CloneGifPictureZKV(REALobjectStruct* source) {
  ObjectRef copy = NewCopyOf<Instance>(source);
  if (!copy) return nullptr;
  Instance* to = DataOf<Instance>(copy.get());
  Fields::Copy(*DataOf<Instance>(source), to);
  to->pixel_block = CopyData(source);
  to->palette = CloneChild(GetGifPalette(source, 0), palette::CloneGifPaletteZKV);
  return copy.Detach();
}

void GifPictureDestructor(REALobjectStruct* self) {
  Instance* data = DataOf<Instance>(self);
  ReleaseView(data);
  ClearField(data->palette);
  ClearField(data->pixel_block);
}

}  // namespace picture
