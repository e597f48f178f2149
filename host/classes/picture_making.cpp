#include "host/classes/picture_making.h"

#include <gd.h>

#include <algorithm>
#include <array>
#include <memory>
#include <vector>

namespace host {
namespace {

struct DestroyImage {
  void operator()(gdImagePtr image) const { gdImageDestroy(image); }
};
using Image = std::unique_ptr<gdImage, DestroyImage>;

// libgd counts transparency from 0 (opaque) to 127.
constexpr uint32_t kGdTransparent = 127;
constexpr uint32_t kWhite = 0xFFFFFF;
constexpr int64_t kLargestLetters = 2000;  // pixels

Image ToGd(const Picture& picture) {
  Image image(gdImageCreateTrueColor(picture.width(), picture.height()));
  if (!image) return nullptr;
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

// The mask is made if it is wanted. False when there is no memory.
bool FromGd(const gdImage& image, bool with_mask, Picture& picture) {
  if (!picture.Create(image.sx, image.sy) || (with_mask && !picture.MakeMask())) return false;
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
  return true;
}

}  // namespace

Ref<Picture> Scaled(const Picture& picture, int64_t width, int64_t height) {
  constexpr int64_t kLongestSide = 32767;
  if (width < 1 || width > kLongestSide || height < 1 || height > kLongestSide) return {};
  const Image from = ToGd(picture);
  const Image to(gdImageCreateTrueColor(static_cast<int>(width), static_cast<int>(height)));
  if (!from || !to) return {};
  gdImageAlphaBlending(to.get(), 0);
  gdImageCopyResampled(to.get(), from.get(), 0, 0, 0, 0, to->sx, to->sy, from->sx, from->sy);
  Ref<Picture> scaled = NewPicture(width, height);
  return scaled && FromGd(*to, static_cast<bool>(picture.mask()), *scaled) ? scaled : Ref<Picture>();
}

Ref<Picture> Difference(const Picture& first, const Picture& second) {
  constexpr uint32_t kRed = 0xFF0000;
  if (first.width() != second.width() || first.height() != second.height()) return {};
  Ref<Picture> difference = NewPicture(first.width(), first.height());
  if (!difference) return difference;
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

std::string DrawLetters(Picture& picture, const std::string& text, const std::string& font, int64_t size,
                        uint32_t rgb) {
  gdFTUseFontConfig(font.find('/') == std::string::npos ? 1 : 0);
  std::string pattern = font;
  std::string letters = text;
  gdFTStringExtra extra = {};
  extra.flags = gdFTEX_RESOLUTION;
  extra.hdpi = extra.vdpi = 72;  // a point is a pixel
  const auto points = static_cast<double>(std::clamp<int64_t>(size, 1, kLargestLetters));
  std::array<int, 8> corners{};  // from the lower left one on, x and y
  const auto write = [&](gdImagePtr image, int x, int y) -> std::string {
    const char* problem =
        gdImageStringFTEx(image, corners.data(), kWhite, pattern.data(), points, 0, x, y, letters.data(), &extra);
    return problem == nullptr ? "" : font + ": " + problem;
  };
  if (std::string problem = write(nullptr, 0, 0); !problem.empty()) return problem;
  const auto [left, right] = std::minmax({corners[0], corners[2], corners[4], corners[6]});
  const auto [top, bottom] = std::minmax({corners[1], corners[3], corners[5], corners[7]});
  const Image coverage(gdImageCreateTrueColor(right - left + 2, bottom - top + 2));
  if (!coverage) return "not enough memory";
  if (std::string problem = write(coverage.get(), 1 - left, 1 - top); !problem.empty()) return problem;
  for (int y = 0; y < coverage->sy; ++y) {
    for (int x = 0; x < coverage->sx; ++x) {
      int& pixel = coverage->tpixels[y][x];
      const auto transparency = kGdTransparent - static_cast<uint32_t>(gdTrueColorGetGreen(pixel)) / 2;
      pixel = static_cast<int>(rgb | transparency << 24);
    }
  }
  return FromGd(*coverage, true, picture) ? "" : "not enough memory";
}

}  // namespace host
