#include "host/classes/picture_file.h"

#include <gd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <stdexcept>
#include <vector>

#include "host/core/output_file.h"
#include "host/core/text.h"

namespace host {
namespace {

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

struct DestroyImage {
  void operator()(gdImagePtr image) const { gdImageDestroy(image); }
};
using Image = std::unique_ptr<gdImage, DestroyImage>;

struct FreeGdBytes {
  void operator()(void* bytes) const { gdFree(bytes); }
};
using GdBytes = std::unique_ptr<void, FreeGdBytes>;

// libgd counts transparency from 0 (opaque) to 127.
constexpr uint32_t kGdTransparent = 127;

// Of 0 to 9: a quarter of the usual level's time for files a sixth larger.
constexpr int kCompression = 4;

// The colours met so far and their indexes, in a hash table that is at most a quarter full.
class ColorIndexes {
 public:
  explicit ColorIndexes(gdImagePtr image) : image_(image) { slots_.fill({0, -1}); }

  // -1 when there is no room for another colour.
  int IndexOf(int color) {
    size_t at = (static_cast<uint32_t>(color) * 2654435761u) >> 22;
    for (; slots_[at].index >= 0; at = (at + 1) % slots_.size()) {
      if (slots_[at].color == color) return slots_[at].index;
    }
    const int index = gdImageColorAllocateAlpha(image_, gdTrueColorGetRed(color), gdTrueColorGetGreen(color),
                                                gdTrueColorGetBlue(color), gdTrueColorGetAlpha(color));
    if (index >= 0) slots_[at] = {color, index};
    return index;
  }

 private:
  struct Slot {
    int color;
    int index;
  };
  std::array<Slot, 1024> slots_;
  gdImagePtr image_;
};

// The same image with a table of its colours, because such files are mostly smaller and sooner written. Null when a
// table can't hold them all.
Image WithColorTable(const gdImage& image) {
  Image copy(gdImageCreate(image.sx, image.sy));
  if (!copy) return nullptr;
  ColorIndexes indexes(copy.get());
  int color = image.tpixels[0][0];
  int index = indexes.IndexOf(color);
  for (int y = 0; y < image.sy; ++y) {
    for (int x = 0; x < image.sx; ++x) {
      if (image.tpixels[y][x] != color) {
        color = image.tpixels[y][x];
        index = indexes.IndexOf(color);
      }
      if (index < 0) return nullptr;
      copy->pixels[y][x] = static_cast<unsigned char>(index);
    }
  }
  return copy;
}

[[noreturn]] void Fail(const std::string& what) { throw std::runtime_error(what); }
[[noreturn]] void FailAsTheSystemSays(const std::string& path) { Fail(Text(path, ": ", std::strerror(errno))); }

}  // namespace

std::string EncodePng(const Picture& picture) {
  if (picture.width() == 0) Fail("the picture has no pixels");
  const Image image(gdImageCreateTrueColor(picture.width(), picture.height()));
  if (!image) throw std::bad_alloc();
  std::vector<uint32_t> colors(static_cast<size_t>(picture.width()));
  std::vector<uint32_t> transparency(colors.size());
  for (int y = 0; y < picture.height(); ++y) {
    picture.pixels().Read(0, y, colors);
    picture.ReadTransparency(0, y, transparency);
    for (size_t x = 0; x < colors.size(); ++x) {
      image->tpixels[y][x] = static_cast<int>(colors[x] | (transparency[x] * kGdTransparent + 127) / 255 << 24);
    }
  }
  gdImageSaveAlpha(image.get(), picture.mask() ? 1 : 0);
  const Image with_table = WithColorTable(*image);
  int size = 0;
  const GdBytes bytes(gdImagePngPtrEx(with_table ? with_table.get() : image.get(), &size, kCompression));
  if (!bytes) throw std::bad_alloc();
  return {static_cast<const char*>(bytes.get()), static_cast<size_t>(size)};
}

void SavePng(const Picture& picture, const std::string& path) {
  const std::string encoded = EncodePng(picture);
  OutputFile file;
  std::string problem = file.Start(path);
  if (problem.empty()) problem = file.Write(encoded);
  if (problem.empty()) problem = file.Keep();
  if (!problem.empty()) Fail(problem);
}

void LoadPng(Host& host, Picture& picture, const std::string& path) {
  const File file(std::fopen(path.c_str(), "rb"));
  if (!file) FailAsTheSystemSays(path);
  const Image image(gdImageCreateFromPng(file.get()));
  if (!image) Fail(path + " is no PNG file");
  if (!picture.Create(host.options(), gdImageSX(image.get()), gdImageSY(image.get()))) {
    Fail("the picture is too large");
  }
  for (int y = 0; y < picture.height(); ++y) {
    for (int x = 0; x < picture.width(); ++x) {
      const auto pixel = static_cast<uint32_t>(gdImageGetTrueColorPixel(image.get(), x, y));
      picture.pixels().Set(x, y, pixel & 0xFFFFFF);
      const uint32_t transparency = ((pixel >> 24) * 255 + kGdTransparent / 2) / kGdTransparent;
      if (transparency != 0 && picture.MakeMask(host)) {
        picture.mask()->pixels().Set(x, y, transparency * 0x010101);
      }
    }
  }
}

}  // namespace host
