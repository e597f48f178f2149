#include "host/classes/color_table.h"

#include <gd.h>

#include <algorithm>
#include <cstdarg>
#include <new>

namespace host {
namespace {

constexpr size_t kColors = size_t{1} << 24;
constexpr int kSampleSide = 512;
constexpr size_t kSampleSize = size_t{kSampleSide} * kSampleSide;
constexpr uint32_t kHalfTransparent = 128;

void Ignore(int /*priority*/, const char* /*format*/, va_list /*arguments*/) {}

// Calls f(colour, transparency) for each pixel, row by row.
template <class F>
void ForEachPixel(const Picture& picture, F f) {
  std::vector<uint32_t> colors(static_cast<size_t>(picture.width()));
  std::vector<uint32_t> transparency(colors.size());
  for (int y = 0; y < picture.height(); ++y) {
    picture.pixels().Read(0, y, colors);
    picture.ReadTransparency(0, y, transparency);
    for (size_t x = 0; x < colors.size(); ++x) f(colors[x], transparency[x]);
  }
}

}  // namespace

void ColorTable::DestroyImage::operator()(gdImageStruct* image) const { gdImageDestroy(image); }

bool ColorTable::Add(const Picture& picture) {
  if (table_) return false;
  seen_.resize(kColors);
  ForEachPixel(picture, [this](uint32_t rgb, uint32_t transparency) {
    if (transparency >= kHalfTransparent) {
      has_transparent_ = true;
    } else {
      AddColor(rgb);
    }
  });
  return true;
}

void ColorTable::AddColor(uint32_t rgb) {
  if (!seen_[rgb]) {
    seen_[rgb] = true;
    if (distinct_.size() <= kMost) distinct_.push_back(rgb);
  }
  // Of n pixels each is in the sample with the same chance, whatever n will be.
  ++pixels_;
  if (sample_.size() < kSampleSize) {
    sample_.push_back(rgb);
  } else if (const uint64_t place = random_() % pixels_; place < kSampleSize) {
    sample_[place] = rgb;
  }
}

// The sample again and again, until it is as large as this method needs to learn its colours.
ColorTable::Image ColorTable::ReducedSample(int colors) const {
  Image image(gdImageCreateTrueColor(kSampleSide, kSampleSide));
  if (!image) throw std::bad_alloc();
  for (size_t i = 0; i < kSampleSize; ++i) {
    image->tpixels[i / kSampleSide][i % kSampleSide] = static_cast<int>(sample_[i % sample_.size()]);
  }
  constexpr int kBest = 1;
  gdImageTrueColorToPaletteSetMethod(image.get(), GD_QUANT_NEUQUANT, kBest);
  gdSetErrorMethod(Ignore);  // it tells how it gets on
  const int reduced = gdImageTrueColorToPalette(image.get(), 0, colors);
  gdClearErrorMethod();
  if (reduced == 0) throw std::bad_alloc();
  return image;
}

void ColorTable::Fix() {
  if (table_) return;
  Image table(gdImageCreate(1, 1));
  if (!table) throw std::bad_alloc();
  const int wanted = most_ - (has_transparent_ ? 1 : 0);
  if (distinct_.size() <= static_cast<size_t>(wanted)) {
    for (const uint32_t rgb : distinct_) {
      gdImageColorAllocate(table.get(), gdTrueColorGetRed(rgb), gdTrueColorGetGreen(rgb), gdTrueColorGetBlue(rgb));
    }
  } else {
    const Image reduced = ReducedSample(wanted);
    for (int i = 0; i < reduced->colorsTotal; ++i) {
      gdImageColorAllocate(table.get(), reduced->red[i], reduced->green[i], reduced->blue[i]);
    }
  }
  nearest_.resize(kColors);
  table_ = std::move(table);
}

int ColorTable::Nearest(uint32_t rgb) {
  if (nearest_[rgb] == 0) {
    const int index =
        gdImageColorClosest(table_.get(), gdTrueColorGetRed(rgb), gdTrueColorGetGreen(rgb), gdTrueColorGetBlue(rgb));
    nearest_[rgb] = static_cast<uint16_t>(std::max(0, index) + 1);
  }
  return nearest_[rgb] - 1;
}

int ColorTable::count() {
  Fix();
  return table_->colorsTotal + (has_transparent_ ? 1 : 0);
}

uint32_t ColorTable::color(int index) {
  Fix();
  if (index >= table_->colorsTotal) return 0;
  return static_cast<uint32_t>(table_->red[index] << 16 | table_->green[index] << 8 | table_->blue[index]);
}

int ColorTable::transparent() { return has_transparent_ ? count() - 1 : -1; }

std::vector<uint8_t> ColorTable::Indexes(const Picture& picture) {
  Fix();
  const int transparent_index = transparent();
  std::vector<uint8_t> indexes;
  indexes.reserve(static_cast<size_t>(picture.width()) * static_cast<size_t>(picture.height()));
  ForEachPixel(picture, [&](uint32_t rgb, uint32_t transparency) {
    const bool shown = transparent_index < 0 || transparency < kHalfTransparent;
    indexes.push_back(static_cast<uint8_t>(shown ? Nearest(rgb) : transparent_index));
  });
  return indexes;
}

}  // namespace host
