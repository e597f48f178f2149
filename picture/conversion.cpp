#include "picture/conversion.h"

#include <algorithm>
#include <array>

#include "bridge/host_reference.h"
#include "codec/picture_rows.h"
#include "picture/locked_description.h"
#include "picture/picture_editor.h"
#include "picture/row_renderer.h"

thread_local long long LastWidth = 0;
thread_local long long LastHeight = 0;

namespace {

bool HasEntries(const GifPalette* palette) { return palette && palette->count > 0; }

// The image's own palette counts when it has entries, whatever `has_cmap` says; else the document's.
const GifPalette* PaletteOf(const Gif* gif, const GifPicture* picture) {
  if (HasEntries(picture->cmap)) return picture->cmap;
  const GifPalette* global = gif && gif->screen ? gif->screen->cmap : nullptr;
  return HasEntries(global) ? global : nullptr;
}

// The palette in the writer's pixel format; indexes beyond its end are black.
PixelTable TableOf(const PictureWriter& writer, const GifPalette& palette) {
  const PixelFormat format = writer.Format();
  PixelTable table;
  const int32_t count = palette.colours ? std::min<int32_t>(palette.count, table.size()) : 0;
  std::transform(palette.colours, palette.colours + count, table.begin(),
                 [&](Colour c) { return format.PixelOf(c.red, c.green, c.blue); });
  std::fill(table.begin() + count, table.end(), format.PixelOf(0, 0, 0));
  return table;
}

// White for the transparent index, if it is one, else black.
PixelTable MaskTable(const PictureWriter& writer, int transparent_index) {
  const PixelFormat format = writer.Format();
  PixelTable table;
  table.fill(format.PixelOf(0, 0, 0));
  if (transparent_index >= 0 && transparent_index < static_cast<int>(table.size())) {
    table[transparent_index] = format.PixelOf(255, 255, 255);
  }
  return table;
}

// Several rows at once: narrow ones are rendered faster so.
REALpictureStruct* Render(PictureWriter& writer, const GifPicture& picture, const PixelTable& table) {
  const RowRenderer renderer(table);
  RowReader reader(&picture);
  std::array<const uint8_t*, PictureWriter::kRowsAtOnce> rows;
  size_t waiting = 0;
  for (int32_t y = 0; y < picture.height; ++y) {
    if (!(rows[waiting++] = reader.Row(y))) return nullptr;
    const bool more = y + 1 < picture.height && reader.RowStays() && waiting < rows.size();
    if (more) continue;
    writer.WriteRows(renderer, {rows.data(), waiting}, picture.width);
    waiting = 0;
  }
  return writer.RenderPictureWriter();
}

// True when the host's own drawing put the mask in place.
bool DrawInto(REALobjectStruct* graphics, REALpictureStruct* mask, long long width, long long height) {
  if (!graphics) return false;
  void* draw =
      REALLoadObjectMethod(graphics,
                           "DrawPicture(Image as Picture, x as Integer, y as Integer, w as Integer, h as Integer, "
                           "sx as Integer = 0, sy as Integer = 0, sw as Integer = -10000, sh as Integer = -10000)");
  if (!draw) return false;
  using DrawPicture = void (*)(REALobjectStruct*, REALpictureStruct*, int64_t, int64_t, int64_t, int64_t, int64_t,
                               int64_t, int64_t, int64_t);
  reinterpret_cast<DrawPicture>(draw)(graphics, mask, 0, 0, width, height, 0, 0, width, height);
  return true;
}

// Images of different sizes or kinds are left as they are.
void CopyRows(const REALgdImage* source, const REALgdImage* target) {
  if (!source || !target || source->sx != target->sx || source->sy != target->sy) return;
  if (source->pixels || target->pixels || !source->tpixels || !target->tpixels) return;
  for (int y = 0; y < source->sy; ++y) {
    if (source->tpixels[y] && target->tpixels[y]) std::copy_n(source->tpixels[y], source->sx, target->tpixels[y]);
  }
}

// For hosts without that drawing: the mask's pixels, row by row.
void CopyInto(REALpictureStruct* target, REALpictureStruct* mask) {
  {
    const LockedDescription from(mask, kPictureKindGDImage);
    if (!from) return;
    const LockedDescription to(target, kPictureKindGDImage);
    if (to) CopyRows(from.platform_object<const REALgdImage>(), to.platform_object<const REALgdImage>());
  }
  REALPictureClearCache(target);
}

// The transparent index that a sub-block gives when laid out as a graphic control extension's: flag in bit 0
// of the first byte, index in the fourth. -1 when it gives none. What the extension's label says is not
// looked at.
int TransparentIndexIn(const GifExtension* extension) {
  if (!extension || !extension->data) return -1;
  for (int32_t i = 0; i < extension->count; ++i) {
    const GifData* data = extension->data[i];
    if (data && data->bytes && data->length >= 4 && (data->bytes[0] & 1)) return data->bytes[3];
  }
  return -1;
}

}  // namespace

REALpictureStruct* MakePictureFromGifPicture(Gif* gif, GifPicture* picture) {
  if (!picture) return nullptr;
  const GifPalette* palette = PaletteOf(gif, picture);
  if (!palette) return nullptr;
  LastWidth = picture->width;
  LastHeight = picture->height;
  PictureWriter writer;
  if (!writer.NewPictureWriter(picture->width, picture->height)) return nullptr;
  return Render(writer, *picture, TableOf(writer, *palette));
}

REALpictureStruct* MakeMaskFromGifPicture(GifPicture* picture, int transparent_index) {
  if (!picture) return nullptr;
  PictureWriter writer;
  if (!writer.NewPictureWriter(picture->width, picture->height)) return nullptr;
  return Render(writer, *picture, MaskTable(writer, transparent_index));
}

void AddPictureMask(REALpictureStruct* picture, REALpictureStruct* mask, long long width, long long height) {
  if (!picture || !mask || width < 1 || height < 1) return;
  auto target = PictureRef::Adopt(REALGetPictureMask(picture, 1));
  if (!target) return;
  const auto graphics = ObjectRef::Adopt(REALGetPictureGraphics(target.get()));
  if (!DrawInto(graphics.get(), mask, width, height)) CopyInto(target.get(), mask);
}

int FindTransparentIndex(Gif* gif, GifPicture* picture) {
  if (!gif || !gif->blocks || !picture) return -1;
  for (int32_t i = 0; i + 1 < gif->count; ++i) {
    const GifBlock* before = gif->blocks[i];
    const GifBlock* block = gif->blocks[i + 1];
    if (!before || !block || block->picture != picture) continue;
    const int index = TransparentIndexIn(before->extension);
    if (index >= 0) return index;
  }
  return -1;
}
