#include "classes/document_class.h"

#include <cstring>

#include "bridge/unicode_strings.h"
#include "classes/block_class.h"
#include "classes/screen_class.h"

REALclassDefinition GifClass = ClassRecord<GifInstance>("GIFZKV", document::GifDestructor);

namespace document {

using Instance = GifInstance;
using Record = Instance::Record;

int64_t GetCount(REALobjectStruct* self, int64_t) { return CountItems<&Instance::blocks>(self); }

REALobjectStruct* GetGifScreen(REALobjectStruct* self, int64_t) {
  return GetObject<GifScreenInstance, &Record::screen, &Instance::screen>(self);
}
void SetGifScreen(REALobjectStruct* self, int64_t, REALobjectStruct* screen) {
  SetStored<&Instance::screen>(self, screen);
}

REALstringStruct* GetHeader(REALobjectStruct* self, int64_t) {
  const Record* record = DataOf<Instance>(self)->record;
  if (!record) return GetStored<&Instance::header>(self);
  const size_t length = strnlen(record->header, sizeof(record->header));
  return REALBuildUnicodeString(record->header, static_cast<int64_t>(length), kEncodingAscii);
}
void SetHeader(REALobjectStruct* self, int64_t, REALstringStruct* header) {
  SetStored<&Instance::header>(self, header);
}

REALobjectStruct* GetGifBlock(REALobjectStruct* self, int64_t index) {
  return GetItem<GifBlockInstance, &Record::blocks, &Instance::blocks>(self, index, "Block");
}
REALobjectStruct* GetFirstBlock(REALobjectStruct* self, int64_t) { return GetGifBlock(self, 0); }

void AddGifBlock(REALobjectStruct* self, REALobjectStruct* block) { AddItem<&Instance::blocks>(self, block); }

REALobjectStruct* CloneGIFZKV(REALobjectStruct* source) {
  ObjectRef copy = NewCopyOf<Instance>(source);
  if (!copy) return nullptr;
  Instance* to = DataOf<Instance>(copy.get());
  to->header = GetHeader(source, 0);
  to->screen = CloneChild(GetGifScreen(source, 0), screen::CloneGifScreenZKV);
  CloneItems<&Instance::blocks>(source, copy.get(), GetGifBlock, block::CloneGifBlockZKV);
  return copy.Detach();
}

void GifDestructor(REALobjectStruct* self) {
  Instance* data = DataOf<Instance>(self);
  DeleteGif(std::exchange(data->record, nullptr));
  ReleaseList(data->blocks);
  ClearField(data->screen);
  ClearField(data->header);
}

}  // namespace document
