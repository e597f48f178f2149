#include "entry/open.h"

#include <cstring>

#include "bridge/strings.h"
#include "classes/document_class.h"
#include "codec/reader.h"
#include "entry/document_holder.h"
#include "entry/folder_item.h"

namespace {

// The document in the stream; empty when the stream does not hold a GIF of any version.
DocumentHolder ReadDocument(MyFILE stream) {
  DocumentHolder gif(NewGif());
  if (!gif) return nullptr;
  ReadGif(&stream, gif.get());
  if (std::strncmp(gif->header, "GIF", 3) != 0) return nullptr;
  return gif;
}

// A new instance that owns the document; null, and the document released, when there is no document or no
// instance.
REALobjectStruct* InstanceOwning(DocumentHolder gif) {
  if (!gif) return nullptr;
  ObjectRef instance = NewInstance<GifInstance>();
  if (!instance) return nullptr;
  DataOf<GifInstance>(instance.get())->record = gif.release();
  return instance.Detach();
}

}  // namespace

REALobjectStruct* OpenGIFfile1(REALfolderItemStruct* item) {
  BufferedFile file = OpenCFILE(item, "rb");
  if (!file) return nullptr;
  DocumentHolder gif = ReadDocument({nullptr, 0, 0, file.get()});
  file.Close();
  return InstanceOwning(std::move(gif));
}

REALobjectStruct* OpenGIFstring(REALstringStruct* data) {
  return InstanceOwning(DocumentHolder(ReadGifString(data)));
}

Gif* ReadGifString(REALstringStruct* data) {
  const StringContents contents(data);
  const auto* bytes = reinterpret_cast<const uint8_t*>(contents.bytes());
  return ReadDocument({bytes, contents.length(), 0, nullptr}).release();
}
