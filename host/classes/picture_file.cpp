#include "host/classes/picture_file.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <stdexcept>
#include <vector>

#include "host/core/gd_library.h"
#include "host/core/output_file.h"
#include "host/core/text.h"
#include "host/host/path.h"

namespace host {
namespace {

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

struct DestroyImage {
  void operator()(gdImagePtr image) const { gd::ImageDestroy(image); }
};
using Image = std::unique_ptr<gdImage, DestroyImage>;

struct FreeGdBytes {
  void operator()(void* bytes) const { gd::Free(bytes); }
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
    const int index = gd::ImageColorAllocateAlpha(image_, gdTrueColorGetRed(color), gdTrueColorGetGreen(color),
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

// A picture row by row in libgd's colours, 0xTTRRGGBB.
class Rows {
 public:
  explicit Rows(const Picture& picture)
      : picture_(picture), colors_(static_cast<size_t>(picture.width())), transparency_(colors_.size()) {}

  std::span<const uint32_t> Read(int y) {
    picture_.pixels().Read(0, y, colors_);
    if (!picture_.mask()) return colors_;
    picture_.ReadTransparency(0, y, transparency_);
    for (size_t x = 0; x < colors_.size(); ++x) {
      colors_[x] |= (transparency_[x] * kGdTransparent + 127) / 255 << 24;
    }
    return colors_;
  }

 private:
  const Picture& picture_;
  std::vector<uint32_t> colors_;
  std::vector<uint32_t> transparency_;
};

// Writes the pixels' indexes; false when a table can't hold them all.
bool PutIndexes(std::span<const uint32_t> colors, ColorIndexes& indexes, unsigned char* to) {
  uint32_t color = colors[0];
  int index = indexes.IndexOf(static_cast<int>(color));
  if (std::memcmp(colors.data(), colors.data() + 1, colors.size_bytes() - sizeof(uint32_t)) == 0) {  // all alike
    std::memset(to, index, colors.size());
    return index >= 0;
  }
  for (const uint32_t next : colors) {
    if (next != color) {
      color = next;
      index = indexes.IndexOf(static_cast<int>(color));
    }
    if (index < 0) return false;
    *to++ = static_cast<unsigned char>(index);
  }
  return true;
}

// The picture with a table of its colours, because such files are mostly smaller and sooner written. Null when a
// table can't hold them all.
Image WithColorTable(const Picture& picture) {
  constexpr size_t kPiece = 32;  // looked at together: mostly of one colour
  Image image(gd::ImageCreate(picture.width(), picture.height()));
  if (!image) throw std::bad_alloc();
  ColorIndexes indexes(image.get());
  Rows rows(picture);
  for (int y = 0; y < picture.height(); ++y) {
    const std::span<const uint32_t> row = rows.Read(y);
    for (size_t x = 0; x < row.size(); x += kPiece) {
      const auto piece = row.subspan(x, std::min(kPiece, row.size() - x));
      if (!PutIndexes(piece, indexes, image->pixels[y] + x)) return nullptr;
    }
  }
  return image;
}

Image WithTrueColors(const Picture& picture) {
  Image image(gd::ImageCreateTrueColor(picture.width(), picture.height()));
  if (!image) throw std::bad_alloc();
  Rows rows(picture);
  for (int y = 0; y < picture.height(); ++y) {
    const std::span<const uint32_t> row = rows.Read(y);
    std::memcpy(image->tpixels[y], row.data(), row.size_bytes());
  }
  return image;
}

[[noreturn]] void Fail(const std::string& what) { throw std::runtime_error(what); }
[[noreturn]] void FailAsTheSystemSays(const std::string& path) { Fail(Text(path, ": ", std::strerror(errno))); }

}  // namespace

std::string EncodePng(const Picture& picture) {
  if (picture.width() == 0) Fail("the picture has no pixels");
  Image image = WithColorTable(picture);
  if (!image) image = WithTrueColors(picture);
  gd::ImageSaveAlpha(image.get(), picture.mask() ? 1 : 0);
  int size = 0;
  const GdBytes bytes(gd::ImagePngPtrEx(image.get(), &size, kCompression));
  if (!bytes) throw std::bad_alloc();
  return {static_cast<const char*>(bytes.get()), static_cast<size_t>(size)};
}

void SavePng(const Picture& picture, const std::string& path) {
  RequirePath(path);
  const std::string encoded = EncodePng(picture);
  OutputFile file;
  std::string problem = file.Start(path);
  if (problem.empty()) problem = file.Write(encoded);
  if (problem.empty()) problem = file.Keep();
  if (!problem.empty()) Fail(problem);
}

void LoadPng(Host& host, Picture& picture, const std::string& path) {
  RequirePath(path);
  const File file(std::fopen(path.c_str(), "rb"));
  if (!file) FailAsTheSystemSays(path);
  const Image image(gd::ImageCreateFromPng(file.get()));
  if (!image) Fail(path + " is no PNG file");
  if (!picture.Create(host.options(), gdImageSX(image.get()), gdImageSY(image.get()))) {
    Fail("the picture is too large");
  }
  std::vector<uint32_t> colors(static_cast<size_t>(picture.width()));
  std::vector<uint32_t> mask(colors.size());
  for (int y = 0; y < picture.height(); ++y) {
    uint32_t all = 0;
    for (int x = 0; x < picture.width(); ++x) {
      const auto at = static_cast<size_t>(x);
      colors[at] = static_cast<uint32_t>(
          gdImageTrueColor(image.get()) ? image->tpixels[y][x] : gd::ImageGetTrueColorPixel(image.get(), x, y));
      all |= colors[at];
    }
    picture.pixels().Write(0, y, colors);
    if (all >> 24 == 0 || !picture.MakeMask(host)) continue;
    for (size_t x = 0; x < mask.size(); ++x) {
      mask[x] = ((colors[x] >> 24) * 255 + kGdTransparent / 2) / kGdTransparent * 0x010101;
    }
    picture.mask()->pixels().Write(0, y, mask);
  }
}

}  // namespace host
