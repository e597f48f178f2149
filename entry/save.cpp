#include "entry/save.h"

#include "classes/document_class.h"
#include "codec/writer.h"
#include "entry/document_assembly.h"
#include "entry/folder_item.h"
#include "entry/holders.h"

namespace {

bool WriteDocument(REALfolderItemStruct* item, const Gif* gif) {
  const FileHolder file(OpenCFILE(item, "wb"));
  if (!file) return false;
  MyFILE stream = {nullptr, 0, 0, file.get()};
  WriteGif(&stream, gif);
  return true;
}

}  // namespace

int8_t SaveGIFfile1(REALfolderItemStruct* item, REALobjectStruct* data) {
  if (!data) return false;
  const GifInstance& document = *DataOf<GifInstance>(data);
  if (document.record) return WriteDocument(item, document.record);
  const DocumentHolder assembled(AssembleDocument(document));
  return assembled && WriteDocument(item, assembled.get());
}
