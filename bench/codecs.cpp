#include "bench/codecs.h"

#include <gd.h>
#include <gif_lib.h>
#include <stb/stb_image.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "codec/reader.h"
#include "codec/writer.h"

// Keeps the compiler from leaving out what makes a result.
static void Use(const void* result) { asm volatile("" : : "r"(result) : "memory"); }

static void Require(bool succeeded, const char* what) {
  if (succeeded) return;
  std::fprintf(stderr, "%s failed\n", what);
  std::exit(1);
}

// --- Ours --------------------------------------------------------------------------------------------------------

static Work DecodeOurs(const Bytes& file) {
  return [&file] {
    MyFILE stream = {file.data(), static_cast<int64_t>(file.size()), 0, nullptr};
    Gif* gif = NewGif();
    ReadGif(&stream, gif);
    Use(gif->blocks);
    DeleteGif(gif);
  };
}

// A file that goes nowhere, with a buffer as large as a saved file gets.
static std::shared_ptr<FILE> Nowhere() {
  std::shared_ptr<FILE> file(std::fopen("/dev/null", "wb"), std::fclose);
  std::setvbuf(file.get(), nullptr, _IOFBF, 0x100000);
  return file;
}

static Work EncodeOurs(const SampleImage& image) {
  const Bytes bytes = EncodeSample(image);
  MyFILE source = {bytes.data(), static_cast<int64_t>(bytes.size()), 0, nullptr};
  const std::shared_ptr<Gif> gif(NewGif(), DeleteGif);
  ReadGif(&source, gif.get());
  return [gif, file = Nowhere()] {
    MyFILE stream = {nullptr, 0, 0, file.get()};
    WriteGif(&stream, gif.get());
  };
}

// --- giflib ------------------------------------------------------------------------------------------------------

static Work DecodeGiflib(const Bytes& file) {
  return [&file] {
    struct Source {
      const uint8_t* bytes;
      size_t left;
    } source = {file.data(), file.size()};
    const auto read = [](GifFileType* gif, GifByteType* bytes, int count) {
      auto* from = static_cast<Source*>(gif->UserData);
      const size_t got = std::min(from->left, static_cast<size_t>(count));
      std::memcpy(bytes, from->bytes, got);
      from->bytes += got;
      from->left -= got;
      return static_cast<int>(got);
    };
    GifFileType* gif = DGifOpen(&source, read, nullptr);
    Require(gif && DGifSlurp(gif) == GIF_OK, "giflib's reading");
    Use(gif->SavedImages);
    DGifCloseFile(gif, nullptr);
  };
}

static Work EncodeGiflib(const SampleImage& image) {
  const auto write = [](GifFileType* gif, const GifByteType* bytes, int count) {
    return static_cast<int>(std::fwrite(bytes, 1, static_cast<size_t>(count), static_cast<FILE*>(gif->UserData)));
  };
  const std::shared_ptr<ColorMapObject> colours(GifMakeMapObject(1 << image.depth, nullptr), GifFreeMapObject);
  return [=, pixels = image.pixels, file = Nowhere()]() mutable {
    GifFileType* gif = EGifOpen(file.get(), write, nullptr);
    EGifPutScreenDesc(gif, image.width, image.height, image.depth, 0, colours.get());
    for (int32_t frame = 0; frame < image.frames; ++frame) {
      EGifPutImageDesc(gif, 0, 0, image.width, image.height, false, nullptr);
      for (int32_t y = 0; y < image.height; ++y) {
        const int32_t row = (y + frame * 3) % image.height;
        EGifPutLine(gif, pixels.data() + static_cast<std::ptrdiff_t>(row) * image.width, image.width);
      }
    }
    EGifCloseFile(gif, nullptr);
  };
}

// --- libgd -------------------------------------------------------------------------------------------------------

static Work DecodeLibgd(const Bytes& file) {
  return [&file] {
    gdImagePtr image = gdImageCreateFromGifPtr(static_cast<int>(file.size()), const_cast<uint8_t*>(file.data()));
    Require(image, "libgd's reading");
    Use(image->pixels);
    gdImageDestroy(image);
  };
}

static Work EncodeLibgd(const SampleImage& image) {
  const std::shared_ptr<gdImage> picture(gdImageCreate(image.width, image.height), gdImageDestroy);
  for (int i = 0; i < 1 << image.depth; ++i) gdImageColorAllocate(picture.get(), i, i, i);
  for (int32_t y = 0; y < image.height; ++y) {
    std::copy_n(image.pixels.data() + static_cast<std::ptrdiff_t>(y) * image.width, image.width, picture->pixels[y]);
  }
  return [picture] {
    int size = 0;
    gdFree(gdImageGifPtr(picture.get(), &size));
  };
}

// --- stb_image ---------------------------------------------------------------------------------------------------

static Work DecodeStb(const Bytes& file) {
  return [&file] {
    int width, height, frames, channels;
    int* delays = nullptr;
    stbi_uc* pixels = stbi_load_gif_from_memory(file.data(), static_cast<int>(file.size()), &delays, &width, &height,
                                                &frames, &channels, 0);
    Require(pixels, "stb_image's reading");
    stbi_image_free(pixels);
    stbi_image_free(delays);
  };
}

std::span<const Codec> Codecs() {
  static constexpr Codec kCodecs[] = {
      {"ours", true, DecodeOurs, EncodeOurs},
      {"giflib", true, DecodeGiflib, EncodeGiflib},
      {"libgd", false, DecodeLibgd, EncodeLibgd},
      {"stb_image", true, DecodeStb, nullptr},
  };
  return kCodecs;
}
