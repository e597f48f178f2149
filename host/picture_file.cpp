#include "host/picture_file.h"

#include <gd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "host/text.h"

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

// libgd counts transparency from 0 (opaque) to 127.
constexpr uint32_t kGdTransparent = 127;

std::string SystemMessage(const std::string& path) { return Text(path, ": ", std::strerror(errno)); }

}  // namespace

std::string SavePng(const Picture& picture, const std::string& path) {
  if (picture.width() == 0) return "the picture has no pixels";
  const Image image(gdImageCreateTrueColor(picture.width(), picture.height()));
  if (!image) return "not enough memory";
  for (int y = 0; y < picture.height(); ++y) {
    for (int x = 0; x < picture.width(); ++x) {
      const uint32_t transparency = (picture.TransparencyAt(x, y) * kGdTransparent + 127) / 255;
      image->tpixels[y][x] = static_cast<int>(picture.pixels().Get(x, y) | transparency << 24);
    }
  }
  gdImageSaveAlpha(image.get(), picture.mask() ? 1 : 0);
  const File file(std::fopen(path.c_str(), "wb"));
  if (!file) return SystemMessage(path);
  gdImagePng(image.get(), file.get());
  return std::fflush(file.get()) == 0 ? "" : SystemMessage(path);
}

std::string LoadPng(Picture& picture, const std::string& path) {
  const File file(std::fopen(path.c_str(), "rb"));
  if (!file) return SystemMessage(path);
  const Image image(gdImageCreateFromPng(file.get()));
  if (!image) return path + " is no PNG file";
  if (!picture.Create(gdImageSX(image.get()), gdImageSY(image.get()))) return "the picture is too large";
  for (int y = 0; y < picture.height(); ++y) {
    for (int x = 0; x < picture.width(); ++x) {
      const auto pixel = static_cast<uint32_t>(gdImageGetTrueColorPixel(image.get(), x, y));
      picture.pixels().Set(x, y, pixel & 0xFFFFFF);
      const uint32_t transparency = ((pixel >> 24) * 255 + kGdTransparent / 2) / kGdTransparent;
      if (transparency != 0 && picture.MakeMask()) {
        picture.mask()->pixels().Set(x, y, transparency * 0x010101);
      }
    }
  }
  return "";
}

}  // namespace host
