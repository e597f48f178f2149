#include "entry/picture_methods.h"

#include <memory>

#include "classes/document_class.h"
#include "classes/picture_class.h"
#include "entry/open.h"
#include "picture/conversion.h"

namespace {

// The document that an attached image belongs to; null for a free-standing one.
Gif* DocumentOf(const GifPictureInstance& image) {
  return image.owner ? DataOf<GifInstance>(image.owner)->record : nullptr;
}

// The first block that is an image, whatever its introducer; null when the document has none.
GifPicture* FirstImage(const Gif* gif) {
  if (!gif || !gif->blocks) return nullptr;
  for (int32_t i = 0; i < gif->count; ++i) {
    if (gif->blocks[i] && gif->blocks[i]->picture) return gif->blocks[i]->picture;
  }
  return nullptr;
}

REALpictureStruct* FirstMask(Gif* gif) {
  GifPicture* image = FirstImage(gif);
  return MakeMaskFromGifPicture(image, FindTransparentIndex(gif, image));
}

// A mask is installed even without a transparent colour: it is then all black.
REALpictureStruct* FirstPictureWithMask(Gif* gif) {
  auto picture = PictureRef::Adopt(MakePictureFromGifPicture(gif, FirstImage(gif)));
  if (!picture) return nullptr;
  auto mask = PictureRef::Adopt(FirstMask(gif));
  AddPictureMask(picture.get(), mask.get(), LastWidth, LastHeight);
  return picture.Detach();
}

}  // namespace

REALpictureStruct* MakePicture(REALobjectStruct* self) {
  const auto& image = *DataOf<GifPictureInstance>(self);
  return MakePictureFromGifPicture(DocumentOf(image), image.record);
}

REALpictureStruct* MakeMask(REALobjectStruct* self) {
  const auto& image = *DataOf<GifPictureInstance>(self);
  return MakeMaskFromGifPicture(image.record, FindTransparentIndex(DocumentOf(image), image.record));
}

REALpictureStruct* MakeMask2(REALobjectStruct* self, int64_t transparent_index) {
  return MakeMaskFromGifPicture(DataOf<GifPictureInstance>(self)->record, static_cast<int32_t>(transparent_index));
}

REALpictureStruct* MakeFirstPicture(REALobjectStruct* self) {
  Gif* gif = DataOf<GifInstance>(self)->record;
  return MakePictureFromGifPicture(gif, FirstImage(gif));
}

REALpictureStruct* MakeFirstMask(REALobjectStruct* self) { return FirstMask(DataOf<GifInstance>(self)->record); }

REALpictureStruct* MakeFirstPictureWithMask(REALobjectStruct* self) {
  return FirstPictureWithMask(DataOf<GifInstance>(self)->record);
}

REALpictureStruct* GifStringToPictureZKV(REALstringStruct* data) {
  const std::unique_ptr<Gif, decltype(&DeleteGif)> gif(ReadGifString(data), &DeleteGif);
  return FirstPictureWithMask(gif.get());
}
