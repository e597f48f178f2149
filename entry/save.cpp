#include "entry/save.h"

#include <algorithm>

#include "classes/document_class.h"
#include "codec/writer.h"
#include "entry/document_assembly.h"
#include "entry/document_holder.h"
#include "entry/folder_item.h"

namespace {

bool WriteDocument(REALfolderItemStruct* item, const Gif* gif) {
  const BufferedFile file = OpenCFILE(item, "wb");
  if (!file) return false;
  MyFILE stream = {nullptr, 0, 0, file.get()};
  WriteGif(&stream, gif);
  return true;
}

bool HasNegativeSize(const Gif& gif) {
  return std::any_of(gif.blocks, gif.blocks + gif.count, [](const GifBlock* block) {
    return block->picture && (block->picture->width < 0 || block->picture->height < 0);
  });
}

}  // namespace

int8_t SaveGIFfile1(REALfolderItemStruct* item, REALobjectStruct* data) {
  if (!data) return false;
  const GifInstance& document = *DataOf<GifInstance>(data);
  if (document.record) return WriteDocument(item, document.record);
  const DocumentHolder assembled(AssembleDocument(document));
  return assembled && !HasNegativeSize(*assembled) && WriteDocument(item, assembled.get());
}
