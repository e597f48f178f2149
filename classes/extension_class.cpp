#include "classes/extension_class.h"

#include "classes/data_class.h"
#include "classes/property.h"

namespace extension {

using Instance = GifExtensionInstance;
using Record = Instance::Record;

int64_t GetCount(REALobjectStruct* self, int64_t) { return CountItems<&Instance::items>(self); }

int64_t GetMarker(REALobjectStruct* self, int64_t) { return GetInteger<&Record::marker, &Instance::marker>(self); }
void SetMarker(REALobjectStruct* self, int64_t, int64_t marker) { SetField<&Instance::marker>(self, marker); }

REALobjectStruct* GetGifData(REALobjectStruct* self, int64_t index) {
  return GetItem<GifDataInstance, &Record::data, &Instance::items>(self, index, "Data");
}
REALobjectStruct* GetFirstData(REALobjectStruct* self, int64_t) { return GetGifData(self, 0); }

void AddData(REALobjectStruct* self, REALobjectStruct* data) { AddItem<&Instance::items>(self, data); }

REALobjectStruct* CloneGifExtensionZKV(REALobjectStruct* source) {
  ObjectRef copy = NewCopyOf<Instance>(source);
  if (!copy) return nullptr;
  SetMarker(copy.get(), 0, GetMarker(source, 0));
  CloneItems<&Instance::items>(source, copy.get(), GetGifData, data::CloneGifDataZKV);
  return copy.Detach();
}

void GifExtensionDestructor(REALobjectStruct* self) {
  Instance* data = DataOf<Instance>(self);
  ReleaseView(data);
  ReleaseList(data->items);
}

}  // namespace extension
