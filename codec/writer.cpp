#include "codec/writer.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <functional>
#include <numeric>

#include "codec/format.h"
#include "codec/lzw_encoder.h"
#include "codec/memory.h"
#include "codec/picture_rows.h"
#include "codec/sub_blocks.h"
#include "codec/tolerance.h"

namespace {

constexpr int32_t kMinimumCodeSize = 2;
constexpr int32_t kUsualCodeSize = 8;  // holds any pixel

void PutWord(MyFILE* stream, int32_t value) {
  MyPutc(stream, value & 0xFF);
  MyPutc(stream, (value >> 8) & 0xFF);
}

int32_t Flag(int32_t value, int bit) { return value == 0 ? 0 : 1 << bit; }

// A number of bits (1 to 8) as a packed byte's three-bit field holds it.
int32_t PackedDepth(int32_t depth) { return std::clamp(depth, 1, 8) - 1; }

// Sections 19 and 21. Whether the entries are as many as the descriptor says is up to whoever built the
// document.
void WritePalette(MyFILE* stream, const GifPalette* palette) {
  if (!palette || !palette->colours) return;
  for (int32_t i = 0; i < palette->count; ++i) {
    const Colour& colour = palette->colours[i];
    const uint8_t bytes[] = {colour.red, colour.green, colour.blue};
    WriteBytes(stream, bytes, sizeof bytes);
  }
}

// Section 17.
void WriteHeader(MyFILE* stream, const Gif* gif) {
  for (const char character : gif->header) {
    if (character == '\0') return;
    MyPutc(stream, character);
  }
}

// Sections 18 and 19. The depth is written with or without a table.
void WriteScreen(MyFILE* stream, const GifScreen* screen) {
  PutWord(stream, screen->width);
  PutWord(stream, screen->height);
  MyPutc(stream, Flag(screen->has_cmap, 7) | PackedDepth(screen->color_res) << 4 | Flag(screen->sorted, 3) |
                     PackedDepth(screen->cmap_depth));
  MyPutc(stream, screen->bgcolour);
  MyPutc(stream, screen->aspect);
  if (screen->has_cmap) WritePalette(stream, screen->cmap);
}

// Sections 20 and 21.
void WriteImageDescriptor(MyFILE* stream, const GifPicture* picture) {
  PutWord(stream, picture->left);
  PutWord(stream, picture->top);
  PutWord(stream, picture->width);
  PutWord(stream, picture->height);
  MyPutc(stream, Flag(picture->has_cmap, 7) | Flag(picture->interlace, 6) | Flag(picture->sorted, 5) |
                     (picture->reserved & 3) << 3 | (picture->has_cmap ? PackedDepth(picture->cmap_depth) : 0));
  if (picture->has_cmap) WritePalette(stream, picture->cmap);
}

// No image of a file has more; one that a script claims would take for ever.
constexpr int64_t kMostPixels = int64_t{65535} * 65535;

// Calls `use` with the rows of a picture, in file order; with none where there is no memory for reading them all.
template <typename Use>
void ForEachRow(const GifPicture* picture, Use use) {
  if (picture->width < 1 || int64_t{picture->height} * picture->width > kMostPixels) return;
  RowReader rows(picture);
  if (!rows.Prepare()) return;
  for (int32_t i = 0; i < picture->height; ++i) {
    use(rows.Row(DisplayRow(picture->height, picture->interlace != 0, i)));
  }
}

// Bits that hold any pixel of a picture.
int32_t BitsOfPixels(const GifPicture* picture) {
  uint32_t bits = 0;
  ForEachRow(picture,
             [&](const uint8_t* row) { bits = std::accumulate(row, row + picture->width, bits, std::bit_or<>()); });
  return std::bit_width(bits);
}

// Section 22: bits for each pixel of a picture, from the table that its pixels index.
int32_t CodeSize(const GifScreen* screen, const GifPicture* picture) {
  const int32_t depth = picture->has_cmap ? picture->cmap_depth : screen->cmap_depth;
  if (depth > kMaxMinimumCodeSize) return kUsualCodeSize;
  const int32_t needed = kTolerant && depth < kUsualCodeSize ? BitsOfPixels(picture) : 0;
  return std::max({depth, needed, kMinimumCodeSize});
}

void WriteImageData(MyFILE* stream, const GifScreen* screen, const GifPicture* picture) {
  const int32_t code_size = CodeSize(screen, picture);
  const int64_t pixels = int64_t{picture->width} * picture->height;
  const Owned<GifEncoder> encoder(static_cast<GifEncoder*>(std::malloc(EncoderSize(pixels))));
  MyPutc(stream, code_size);
  if (!encoder) return EndSubBlocks(stream);  // an image without pixels: what follows stays readable
  StartGifEncoder(encoder.get(), code_size, pixels);
  WriteGifCode(stream, encoder.get(), encoder->strings.clear_code);
  ForEachRow(picture, [&](const uint8_t* row) { WriteGifLine(stream, encoder.get(), row, picture->width); });
  if (encoder->strings.prefix_code != kNoPrefix) WriteGifCode(stream, encoder.get(), encoder->strings.prefix_code);
  WriteGifCode(stream, encoder.get(), encoder->strings.end_code);
  WriteGifCode(stream, encoder.get(), kFlush);
}

// Sections 23 to 26. What is longer than a sub-block can be goes into several.
void WriteExtension(MyFILE* stream, const GifExtension* extension) {
  MyPutc(stream, extension->marker);
  for (int32_t i = 0; extension->data && i < extension->count; ++i) {
    const GifData* data = extension->data[i];
    if (data) WriteSubBlocks(stream, data->bytes, data->length);
  }
  EndSubBlocks(stream);
}

void WriteBlock(MyFILE* stream, const GifScreen* screen, const GifBlock* block) {
  MyPutc(stream, block->intro);
  if (block->picture) {
    WriteImageDescriptor(stream, block->picture);
    WriteImageData(stream, screen, block->picture);
  }
  if (block->extension) WriteExtension(stream, block->extension);
}

}  // namespace

void WriteGif(MyFILE* stream, const Gif* gif) {
  WriteHeader(stream, gif);
  WriteScreen(stream, gif->screen);
  for (int32_t i = 0; gif->blocks && i < gif->count; ++i) {
    if (gif->blocks[i]) WriteBlock(stream, gif->screen, gif->blocks[i]);
  }
  MyPutc(stream, kTrailer);
}
