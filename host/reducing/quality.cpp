#include "host/reducing/quality.h"

#ifdef GIF_IMAGEQUANT
#include <libimagequant.h>

#include <algorithm>
#include <cmath>
#include <memory>
#endif

namespace host {

#ifdef GIF_IMAGEQUANT

bool CanChooseByQuality() { return true; }

namespace {

struct Destroy {
  void operator()(liq_attr* attributes) const { liq_attr_destroy(attributes); }
  void operator()(liq_histogram* histogram) const { liq_histogram_destroy(histogram); }
  void operator()(liq_result* result) const { liq_result_destroy(result); }
};

liq_histogram_entry EntryOf(const Quantiser::Point& point) {
  const auto byte = [](float part) {
    return static_cast<unsigned char>(std::lround(std::clamp(part, 0.0F, 255.0F)));
  };
  liq_histogram_entry entry{};
  entry.color = {byte(point.at[0]), byte(point.at[1]), byte(point.at[2]), 255};
  entry.count = static_cast<unsigned int>(point.count);
  return entry;
}

}  // namespace

std::optional<std::vector<uint32_t>> ChooseByQuality(const Quantiser& quantiser, size_t most, int quality) {
  const std::unique_ptr<liq_attr, Destroy> attributes(liq_attr_create());
  if (!attributes) return std::nullopt;
  liq_set_max_colors(attributes.get(), static_cast<int>(std::max<size_t>(most, 2)));
  liq_set_quality(attributes.get(), 0, quality);
  std::vector<liq_histogram_entry> entries;
  for (const Quantiser::Point& point : quantiser.Points()) entries.push_back(EntryOf(point));
  const std::unique_ptr<liq_histogram, Destroy> histogram(liq_histogram_create(attributes.get()));
  constexpr double kGamma = 0;  // that of sRGB
  if (!histogram || liq_histogram_add_colors(histogram.get(), attributes.get(), entries.data(),
                                             static_cast<int>(entries.size()), kGamma) != LIQ_OK) {
    return std::nullopt;
  }
  liq_result* made = nullptr;
  if (liq_histogram_quantize(histogram.get(), attributes.get(), &made) != LIQ_OK) return std::nullopt;
  const std::unique_ptr<liq_result, Destroy> result(made);
  const liq_palette* palette = liq_get_palette(result.get());
  std::vector<uint32_t> colors;
  for (unsigned int i = 0; i < palette->count && colors.size() < most; ++i) {
    const liq_color& color = palette->entries[i];
    colors.push_back(uint32_t{color.r} << 16 | uint32_t{color.g} << 8 | color.b);
  }
  return colors;
}

#else

bool CanChooseByQuality() { return false; }

std::optional<std::vector<uint32_t>> ChooseByQuality(const Quantiser& /*quantiser*/, size_t /*most*/,
                                                     int /*quality*/) {
  return std::nullopt;
}

#endif

}  // namespace host
