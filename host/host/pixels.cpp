#include "host/host/pixels.h"

#include <gd.h>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <new>
#include <vector>

#include "bridge/gif_plugin_host.h"
#include "host/core/heap.h"
#include "platform/frameworks.h"
#include "platform/pages.h"

namespace host {
namespace {

// libgd's true-colour image: rows of ints, 0xRRGGBB and in the top byte a transparency that is 0 when opaque. It is
// made as libgd makes one, but in one piece: memory that nobody writes to is zero and costs nothing.
class GdPixels : public Pixels {
 public:
  GdPixels(int width, int height) : rows_(static_cast<size_t>(height)) {
    const MemoryToFill got = AllocateZerosToFill(static_cast<size_t>(width) * rows_.size() * sizeof(int));
    memory_.reset(static_cast<std::byte*>(got.memory));
    if (!memory_) throw std::bad_alloc();
    int* const pixels = reinterpret_cast<int*>(memory_.get() + got.start);
    for (size_t y = 0; y < rows_.size(); ++y) rows_[y] = pixels + y * static_cast<size_t>(width);
    image_.sx = width;
    image_.sy = height;
    image_.tpixels = rows_.data();
    image_.trueColor = 1;
    image_.transparent = -1;
    image_.alphaBlendingFlag = 1;
    image_.thick = 1;
    image_.cx2 = width - 1;
    image_.cy2 = height - 1;
    image_.res_x = GD_RESOLUTION;
    image_.res_y = GD_RESOLUTION;
    image_.interpolation_id = GD_BILINEAR_FIXED;
  }

  void Read(int x, int y, std::span<uint32_t> to) const override {
    const int* pixel = &image_.tpixels[y][x];
    for (uint32_t& rgb : to) rgb = static_cast<uint32_t>(*pixel++) & 0xFFFFFF;
  }
  void Write(int x, int y, std::span<const uint32_t> from) override {
    int* pixel = &image_.tpixels[y][x];
    for (const uint32_t rgb : from) *pixel++ = static_cast<int>(rgb & 0xFFFFFF);
  }
  const uint8_t* At(int x, int y) const override { return reinterpret_cast<const uint8_t*>(&image_.tpixels[y][x]); }
  size_t pixel_size() const override { return sizeof(int); }
  uint32_t description_kind() const override { return kPictureKindGDImage; }
  void* platform_object() override { return &image_; }

 private:
  Memory memory_;
  std::vector<int*> rows_;
  gdImage image_ = {};
};

// A bitmap context: rows of 3 or 4 bytes for each pixel, with bytes behind each row that stay untouched.
class BitmapPixels : public Pixels {
 public:
  BitmapPixels(const HostOptions& options, int width, int height)
      : context_{nullptr, static_cast<size_t>(width), static_cast<size_t>(height),
                 0,       options.bits_per_pixel,     options.alpha_info},
        padding_(options.row_padding) {
    context_.bytes_per_row = context_.width * BitmapPixels::pixel_size() + padding_;
    bytes_.resize(context_.bytes_per_row * context_.height);
    context_.data = bytes_.data();
    for (size_t y = 0; y < context_.height; ++y) std::fill_n(PaddingOf(y), padding_, kPaddingByte);
  }

  void Read(int x, int y, std::span<uint32_t> to) const override {
    const uint8_t* red = At(x, y) + red_offset();
    for (uint32_t& rgb : to) {
      rgb = static_cast<uint32_t>(red[0] << 16 | red[1] << 8 | red[2]);
      red += BitmapPixels::pixel_size();
    }
  }

  void Write(int x, int y, std::span<const uint32_t> from) override {
    uint8_t* pixel = bytes_.data() + OffsetOf(x, y);
    std::fill_n(pixel, from.size() * BitmapPixels::pixel_size(), uint8_t{0xFF});
    uint8_t* red = pixel + red_offset();
    for (const uint32_t rgb : from) {
      red[0] = static_cast<uint8_t>(rgb >> 16);
      red[1] = static_cast<uint8_t>(rgb >> 8);
      red[2] = static_cast<uint8_t>(rgb);
      red += BitmapPixels::pixel_size();
    }
  }

  const uint8_t* At(int x, int y) const override { return bytes_.data() + OffsetOf(x, y); }
  size_t pixel_size() const override { return context_.bits_per_pixel / 8; }
  uint32_t description_kind() const override { return kPictureKindCGBitmapContext; }
  void* platform_object() override { return &context_; }

  bool IsIntact() const override {
    for (size_t y = 0; y < context_.height; ++y) {
      const uint8_t* padding = bytes_.data() + (y + 1) * context_.bytes_per_row - padding_;
      if (!std::all_of(padding, padding + padding_, [](uint8_t b) { return b == kPaddingByte; })) return false;
    }
    return true;
  }

 private:
  static constexpr uint8_t kPaddingByte = 0xA5;

  size_t OffsetOf(int x, int y) const {
    return static_cast<size_t>(y) * context_.bytes_per_row + static_cast<size_t>(x) * pixel_size();
  }
  uint8_t* PaddingOf(size_t y) { return bytes_.data() + (y + 1) * context_.bytes_per_row - padding_; }

  size_t red_offset() const {
    const bool alpha_first = context_.alpha_info == kCGImageAlphaPremultipliedFirst ||
                             context_.alpha_info == kCGImageAlphaFirst ||
                             context_.alpha_info == kCGImageAlphaNoneSkipFirst;
    return context_.bits_per_pixel == 32 && alpha_first ? 1 : 0;
  }

  CGContext context_;
  size_t padding_;
  std::vector<uint8_t> bytes_;
};

}  // namespace

std::unique_ptr<Pixels> MakePixels(const HostOptions& options, int width, int height) {
  // Both kinds end where libgd does: an image's bytes are counted in an int.
  if (width < 1 || height < 1 || width > std::numeric_limits<int>::max() / 4 / height) return nullptr;
  try {
    if (options.pictures == PictureKind::kConsole) return std::make_unique<GdPixels>(width, height);
    return std::make_unique<BitmapPixels>(options, width, height);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

}  // namespace host
