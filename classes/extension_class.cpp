#include "classes/extension_class.h"

#include "classes/data_class.h"

REALclassDefinition GifExtensionClass =
    ClassRecord<GifExtensionInstance>("GifExtensionZKV", extension::GifExtensionDestructor);

namespace extension {

using Instance = GifExtensionInstance;
using Record = Instance::Record;

int64_t GetCount(REALobjectStruct* self, int64_t) { return CountItems<&Instance::items>(self); }

REALobjectStruct* GetGifData(REALobjectStruct* self, int64_t index) {
  return GetItem<GifDataInstance, &Record::data, &Instance::items>(self, index, "Data");
}
REALobjectStruct* GetFirstData(REALobjectStruct* self, int64_t) { return GetGifData(self, 0); }

void AddData(REALobjectStruct* self, REALobjectStruct* data) { AddItem<&Instance::items>(self, data); }

REALobjectStruct* CloneGifExtensionZKV(REALobjectStruct* source) {
  ObjectRef copy = NewCopyOf<Instance>(source);
  if (!copy) return nullptr;
  Fields::Copy(*DataOf<Instance>(source), DataOf<Instance>(copy.get()));
  CloneItems<&Instance::items>(source, copy.get(), GetGifData, data::CloneGifDataZKV);
  return copy.Detach();
}

void GifExtensionDestructor(REALobjectStruct* self) {
  Instance* data = DataOf<Instance>(self);
  ReleaseView(data);
  ReleaseList(data->items);
}

}  // namespace extension
