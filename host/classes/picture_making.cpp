#include "host/classes/picture_making.h"

#include <algorithm>
#include <array>
#include <memory>
#include <new>
#include <stdexcept>
#include <vector>

#include "host/core/gd_library.h"
#include "host/core/text.h"

namespace host {
namespace {

struct DestroyImage {
  void operator()(gdImagePtr image) const { gd::ImageDestroy(image); }
};
using Image = std::unique_ptr<gdImage, DestroyImage>;

// libgd counts transparency from 0 (opaque) to 127.
constexpr uint32_t kGdTransparent = 127;
constexpr uint32_t kWhite = 0xFFFFFF;
constexpr int64_t kLargestLetters = 2000;  // pixels

Image ToGd(const Picture& picture) {
  Image image(gd::ImageCreateTrueColor(picture.width(), picture.height()));
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
  return image;
}

// The mask is made if it is wanted.
void FromGd(Host& host, const gdImage& image, bool with_mask, Picture& picture) {
  if (!picture.Create(host.options(), image.sx, image.sy) || (with_mask && !picture.MakeMask(host))) {
    throw std::bad_alloc();
  }
  std::vector<uint32_t> colors(static_cast<size_t>(image.sx));
  std::vector<uint32_t> mask(colors.size());
  for (int y = 0; y < image.sy; ++y) {
    for (size_t x = 0; x < colors.size(); ++x) {
      const auto pixel = static_cast<uint32_t>(image.tpixels[y][x]);
      colors[x] = pixel & kWhite;
      mask[x] = ((pixel >> 24) * 255 + kGdTransparent / 2) / kGdTransparent * 0x010101;
    }
    picture.pixels().Write(0, y, colors);
    if (with_mask) picture.mask()->pixels().Write(0, y, mask);
  }
}

}  // namespace

Ref<Picture> Scaled(Host& host, const Picture& picture, int64_t width, int64_t height) {
  Ref<Picture> scaled = NewPicture(host, width, height);
  if (!scaled) throw std::runtime_error(Text("A picture of ", width, " by ", height, " pixels can't be made."));
  const Image from = ToGd(picture);
  const Image to(gd::ImageCreateTrueColor(scaled->width(), scaled->height()));
  if (!to) throw std::bad_alloc();
  gd::ImageAlphaBlending(to.get(), 0);
  gd::ImageCopyResampled(to.get(), from.get(), 0, 0, 0, 0, to->sx, to->sy, from->sx, from->sy);
  FromGd(host, *to, static_cast<bool>(picture.mask()), *scaled);
  return scaled;
}

Ref<Picture> Difference(Host& host, const Picture& first, const Picture& second) {
  constexpr uint32_t kRed = 0xFF0000;
  if (first.width() != second.width() || first.height() != second.height()) {
    throw std::runtime_error("Pictures of one size are needed.");
  }
  Ref<Picture> difference = NewPicture(host, first.width(), first.height());
  if (!difference) throw std::bad_alloc();
  std::array<std::vector<uint32_t>, 2> colors;
  std::array<std::vector<uint32_t>, 2> transparency;
  std::vector<uint32_t> marks(static_cast<size_t>(first.width()));
  for (int y = 0; y < first.height(); ++y) {
    for (size_t i = 0; i < 2; ++i) {
      const Picture& picture = i == 0 ? first : second;
      colors[i].resize(marks.size());
      transparency[i].resize(marks.size());
      picture.pixels().Read(0, y, colors[i]);
      picture.ReadTransparency(0, y, transparency[i]);
    }
    for (size_t x = 0; x < marks.size(); ++x) {
      const bool both_hidden = transparency[0][x] == 255 && transparency[1][x] == 255;
      const bool same = transparency[0][x] == transparency[1][x] && (both_hidden || colors[0][x] == colors[1][x]);
      marks[x] = same ? 0 : kRed;
    }
    difference->pixels().Write(0, y, marks);
  }
  return difference;
}

void DrawLetters(Host& host, Picture& picture, Lettering lettering) {
  gd::FTUseFontConfig(lettering.font.find('/') == std::string::npos ? 1 : 0);
  gdFTStringExtra extra = {};
  extra.flags = gdFTEX_RESOLUTION;
  extra.hdpi = extra.vdpi = 72;  // a point is a pixel
  const auto points = static_cast<double>(std::clamp<int64_t>(lettering.size, 1, kLargestLetters));
  std::array<int, 8> corners{};  // from the lower left one on, x and y
  const auto write = [&](gdImagePtr image, int x, int y) {
    const char* problem = gd::ImageStringFTEx(image, corners.data(), kWhite, lettering.font.data(), points, 0, x, y,
                                              lettering.text.data(), &extra);
    if (problem != nullptr) throw std::runtime_error(Text(lettering.font, ": ", problem));
  };
  write(nullptr, 0, 0);
  const auto [left, right] = std::minmax({corners[0], corners[2], corners[4], corners[6]});
  const auto [top, bottom] = std::minmax({corners[1], corners[3], corners[5], corners[7]});
  const Image coverage(gd::ImageCreateTrueColor(right - left + 2, bottom - top + 2));
  if (!coverage) throw std::bad_alloc();
  write(coverage.get(), 1 - left, 1 - top);
  for (int y = 0; y < coverage->sy; ++y) {
    for (int x = 0; x < coverage->sx; ++x) {
      int& pixel = coverage->tpixels[y][x];
      const auto transparency = kGdTransparent - static_cast<uint32_t>(gdTrueColorGetGreen(pixel)) / 2;
      pixel = static_cast<int>(lettering.rgb | transparency << 24);
    }
  }
  FromGd(host, *coverage, true, picture);
}

}  // namespace host
