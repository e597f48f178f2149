#include "classes/block_class.h"

#include "classes/extension_class.h"
#include "classes/picture_class.h"

REALclassDefinition GifBlockClass = ClassRecord<GifBlockInstance>("GifBlockZKV", block::GifBlockDestructor);

namespace block {

using Instance = GifBlockInstance;
using Record = Instance::Record;

REALobjectStruct* GetGifExtension(REALobjectStruct* self, int64_t) {
  return GetObject<GifExtensionInstance, &Record::extension, &Instance::extension>(self);
}
void SetGifExtension(REALobjectStruct* self, int64_t, REALobjectStruct* extension) {
  SetStored<&Instance::extension>(self, extension);
}

REALobjectStruct* GetGifPicture(REALobjectStruct* self, int64_t) {
  return GetObject<GifPictureInstance, &Record::picture, &Instance::picture>(self);
}
void SetGifPicture(REALobjectStruct* self, int64_t, REALobjectStruct* picture) {
  SetStored<&Instance::picture>(self, picture);
}

REALobjectStruct* CloneGifBlockZKV(REALobjectStruct* source) {
  ObjectRef copy = NewCopyOf<Instance>(source);
  if (!copy) return nullptr;
  Instance* to = DataOf<Instance>(copy.get());
  Fields::Copy(*DataOf<Instance>(source), to);
  to->extension = CloneChild(GetGifExtension(source, 0), extension::CloneGifExtensionZKV);
  to->picture = CloneChild(GetGifPicture(source, 0), picture::CloneGifPictureZKV);
  return copy.Detach();
}

void GifBlockDestructor(REALobjectStruct* self) {
  Instance* data = DataOf<Instance>(self);
  ReleaseView(data);
  ClearField(data->picture);
  ClearField(data->extension);
}

}  // namespace block
