#pragma once

// Documents put together by hand, and the bytes that the writer makes of them.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "codec/building.h"
#include "codec/writer.h"

struct DeleteDocument {
  void operator()(Gif* gif) const { DeleteGif(gif); }
};
using Document = std::unique_ptr<Gif, DeleteDocument>;

inline GifPalette* MakePalette(const std::vector<uint32_t>& rgb) {
  GifPalette* palette = NewPalette(static_cast<int32_t>(rgb.size()));
  for (size_t i = 0; i < rgb.size(); ++i) {
    palette->colours[i] = {0, static_cast<uint8_t>(rgb[i] >> 16), static_cast<uint8_t>(rgb[i] >> 8),
                           static_cast<uint8_t>(rgb[i])};
  }
  return palette;
}

inline void SetPalette(GifPalette*& palette, const std::vector<uint32_t>& rgb) {
  DeletePalette(palette);
  palette = MakePalette(rgb);
}

inline GifBlock* AddBlock(Gif* gif, int32_t intro) {
  GrowList(gif->blocks, gif->count);
  gif->blocks[gif->count] = NewRecord<GifBlock>();
  gif->blocks[gif->count]->intro = intro;
  return gif->blocks[gif->count++];
}

// Pixels in display order; those that are missing are 0.
inline GifPicture* AddPicture(Gif* gif, int32_t width, int32_t height, bool interlace,
                              const std::vector<uint8_t>& pixels) {
  GifPicture* picture = NewRecord<GifPicture>();
  picture->width = width;
  picture->height = height;
  picture->interlace = interlace;
  MakeRows(picture);
  for (size_t i = 0; i < pixels.size(); ++i) picture->data[i / width][i % width] = pixels[i];
  AddBlock(gif, kImageIntroducer)->picture = picture;
  return picture;
}

inline GifExtension* AddExtension(Gif* gif, int32_t marker, const std::vector<std::string>& sub_blocks) {
  GifExtension* extension = NewRecord<GifExtension>();
  extension->marker = marker;
  for (const std::string& bytes : sub_blocks) {
    GrowList(extension->data, extension->count);
    GifData* data = extension->data[extension->count++] = NewRecord<GifData>();
    data->length = static_cast<int32_t>(bytes.size());
    data->bytes = NewRecord<uint8_t>(bytes.size());
    std::copy(bytes.begin(), bytes.end(), data->bytes);
  }
  AddBlock(gif, kExtensionIntroducer)->extension = extension;
  return extension;
}

inline std::vector<uint8_t> Written(const Gif* gif) {
  char* bytes = nullptr;
  size_t size = 0;
  MyFILE stream = {nullptr, 0, 0, open_memstream(&bytes, &size)};
  WriteGif(&stream, gif);
  std::fclose(stream.file);
  std::vector<uint8_t> written(bytes, bytes + size);
  std::free(bytes);
  return written;
}
