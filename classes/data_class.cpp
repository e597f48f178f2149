#include "classes/data_class.h"

#include "bridge/memory_blocks.h"
#include "bridge/strings.h"
#include "bridge/unicode_strings.h"

REALclassDefinition GifDataClass = ClassRecord<GifDataInstance>("GifDataZKV", data::GifDataDestructor);

namespace data {

using Instance = GifDataInstance;
using Record = Instance::Record;

static REALstringStruct* BuildRawString(const void* bytes, int64_t length) {
  return REALBuildUnicodeString(static_cast<const char*>(bytes), length, kEncodingUnknown);
}

int64_t GetLength(REALobjectStruct* self, int64_t) {
  const Instance* data = DataOf<Instance>(self);
  return data->record ? data->record->length : StringByteLength(data->data_string);
}

REALstringStruct* CopyDString(REALobjectStruct* self, int64_t) {
  const Record* record = DataOf<Instance>(self)->record;
  return record ? BuildRawString(record->bytes, record->length) : GetStored<&Instance::data_string>(self);
}
void SetDString(REALobjectStruct* self, int64_t, REALstringStruct* value) {
  SetStored<&Instance::data_string>(self, value);
}

REALmemoryBlockStruct* CopyDMemory(REALobjectStruct* self, int64_t) {
  const Instance* data = DataOf<Instance>(self);
  if (data->record) return REALBuildMemoryblock(data->record->bytes, data->record->length);
  const StringContents contents(data->data_string);
  return REALBuildMemoryblock(contents.bytes(), contents.length());
}
void SetDMemory(REALobjectStruct* self, int64_t, REALmemoryBlockStruct* value) {
  Instance* data = DataOf<Instance>(self);
  ClearField(data->data_string);
  if (value) data->data_string = BuildRawString(MyREALMemoryBlockGetPtr(value), MemoryBlockSize(value));
}

REALobjectStruct* CloneGifDataZKV(REALobjectStruct* source) {
  ObjectRef copy = NewCopyOf<Instance>(source);
  if (copy) DataOf<Instance>(copy.get())->data_string = CopyDString(source, 0);
  return copy.Detach();
}

void GifDataDestructor(REALobjectStruct* self) {
  Instance* data = DataOf<Instance>(self);
  ReleaseView(data);
  ClearField(data->data_string);
}

}  // namespace data
