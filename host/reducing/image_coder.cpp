#include "host/reducing/image_coder.h"

#include <algorithm>
#include <array>
#include <utility>

#include "host/reducing/code_strings.h"
#include "host/reducing/matching.h"

namespace host {
namespace {

constexpr uint32_t kTableSlots = 1024;
constexpr uint32_t kSlotShift = 22;
constexpr int kMostColors = 256;
constexpr int kLeastCodeSize = 2;

uint32_t SlotOf(uint32_t rgb) { return rgb * 0x9E3779B1u >> kSlotShift; }

int DepthFor(size_t entries) {
  int depth = 1;
  while (size_t{1} << depth < entries) ++depth;
  return depth;
}

// Calls f(place in the image, place on the canvas) for each pixel.
template <class F>
void ForEachPlace(const Rect& area, int canvas_width, F f) {
  size_t at = 0;
  for (int y = area.top; y < area.bottom; ++y) {
    const size_t row = static_cast<size_t>(y) * static_cast<size_t>(canvas_width);
    for (int x = area.left; x < area.right; ++x) f(at++, row + static_cast<size_t>(x));
  }
}

// How often each index is needed, and how often it would only do.
struct Use {
  std::array<uint32_t, kMostColors> needed{};
  std::array<uint32_t, kMostColors> possible{};
};

// The index that costs the fewest choices to be taken for the transparent one; -1 when all are needed.
int ChooseTransparent(const Use& use, size_t colors, int depth) {
  if (colors < size_t{1} << depth) return static_cast<int>(colors);
  int best = -1;
  for (size_t i = 0; i < colors; ++i) {
    if (use.needed[i] > 0) continue;
    if (best < 0 || use.possible[i] < use.possible[static_cast<size_t>(best)]) best = static_cast<int>(i);
  }
  return best;
}

// The pixels' choices with that table.
Choices ChoicesOf(const Task& task, const Table& table) {
  Choices choices;
  choices.own.resize(task.place.size());
  choices.free.resize(task.place.size());
  Use use;
  size_t free = 0;
  uint32_t last = kClear;
  int index = Table::kNone;
  ForEachPlace(task.place, task.wanted->width, [&](size_t at, size_t from) {
    const uint32_t wanted = task.wanted->pixels[from];
    const bool same = wanted == task.below->pixels[from];
    if (wanted != last) {
      last = wanted;
      index = wanted == kClear ? Table::kNone : table.Find(wanted);
    }
    choices.own[at] = static_cast<int16_t>(index);
    choices.free[at] = same ? 1 : 0;
    free += same ? 1 : 0;
    if (index != Table::kNone) ++(same ? use.possible : use.needed)[static_cast<size_t>(index)];
  });
  if (free == 0) return choices;
  choices.transparent = ChooseTransparent(use, table.colors().size(), table.depth());
  if (choices.transparent < 0) {
    std::fill(choices.free.begin(), choices.free.end(), 0);
    return choices;
  }
  const auto taken = static_cast<size_t>(choices.transparent);
  if (use.possible[taken] > 0) {
    for (int16_t& own : choices.own) {
      if (own == choices.transparent) own = Choices::kNoIndex;
    }
  }
  return choices;
}

// The ways to make use of choices, by what they cost.
enum class Way { kNone, kRuns1, kRuns8, kRuns16, kRuns24, kOldest, kNewest };

std::vector<uint8_t> PixelsOf(const Choices& choices, int code_size, Way way) {
  switch (way) {
    case Way::kNone:
      return std::vector<uint8_t>(choices.own.begin(), choices.own.end());
    case Way::kRuns1:
      return TransparentRuns(choices, 1);
    case Way::kRuns8:
      return TransparentRuns(choices, 8);
    case Way::kRuns16:
      return TransparentRuns(choices, 16);
    case Way::kRuns24:
      return TransparentRuns(choices, 24);
    case Way::kOldest:
      return MatchStrings(choices, code_size, Preference::kOldest);
    case Way::kNewest:
      return MatchStrings(choices, code_size, Preference::kNewest);
  }
  return {};
}

// Bands of rows from all over a large image.
Choices SampleOf(const Choices& choices, size_t width) {
  constexpr size_t kRows = 8;
  constexpr size_t kEnough = 20000;
  const size_t one_of = std::max<size_t>(choices.own.size() / kEnough, 4);
  Choices sample;
  sample.transparent = choices.transparent;
  const size_t band = width * kRows;
  for (size_t from = 0; from < choices.own.size(); from += band * one_of) {
    const auto begin = static_cast<ptrdiff_t>(from);
    const auto end = static_cast<ptrdiff_t>(std::min(from + band, choices.own.size()));
    sample.own.insert(sample.own.end(), choices.own.begin() + begin, choices.own.begin() + end);
    sample.free.insert(sample.free.end(), choices.free.begin() + begin, choices.free.begin() + end);
  }
  return sample;
}

// The ways that may differ in what they give.
std::vector<Way> DifferentWays(const Choices& choices) {
  size_t longest = 0;
  size_t free = 0;
  int16_t last_index = 0;
  bool needs_transparent = false;
  for (size_t i = 0; i < choices.own.size(); ++i) {
    free = choices.free[i] != 0 ? free + 1 : 0;
    longest = std::max(longest, free);
    last_index = std::max(last_index, choices.own[i]);
    needs_transparent = needs_transparent || choices.own[i] == Choices::kNoIndex;
  }
  if (longest == 0) return {Way::kNone};
  std::vector<Way> ways;
  if (!needs_transparent) ways.push_back(Way::kNone);
  ways.push_back(Way::kRuns1);
  if (needs_transparent || longest >= 8) ways.push_back(Way::kRuns8);
  if (longest >= 16) ways.push_back(Way::kRuns16);
  if (longest >= 24) ways.push_back(Way::kRuns24);
  // Among strings of one pixel the oldest is that of the lowest index: as long as none has begun with the
  // transparent one, none does.
  if (needs_transparent || choices.transparent < last_index) ways.push_back(Way::kOldest);
  ways.push_back(Way::kNewest);
  return ways;
}

// The ways worth trying: of a large image those that are among the best on a sample of it.
std::vector<Way> WaysFor(const Choices& choices, size_t width, int code_size) {
  constexpr size_t kLarge = 50000;
  constexpr double kClose = 1.01;
  std::vector<Way> ways = DifferentWays(choices);
  if (ways.size() == 1 || choices.own.size() < kLarge) return ways;
  const Choices sample = SampleOf(choices, width);
  std::vector<int64_t> bytes;
  for (const Way way : ways) bytes.push_back(CountBytes(PixelsOf(sample, code_size, way), code_size));
  const auto least = std::min_element(bytes.begin(), bytes.end());
  const auto most = static_cast<int64_t>(static_cast<double>(*least) * kClose);
  std::vector<Way> best;
  for (size_t i = 0; i < ways.size(); ++i) {
    if (bytes[i] <= most) best.push_back(ways[i]);
  }
  // Where all are close there is little to gain.
  constexpr size_t kMostTried = 3;
  if (best.size() <= kMostTried) return best;
  return {ways[static_cast<size_t>(least - bytes.begin())]};
}

NearChoices NearChoicesOf(const Task& task, const Table& table, const Choices& choices,
                          std::vector<uint8_t> nearest) {
  NearChoices near;
  const size_t count = task.place.size();
  near.wanted.resize(count);
  near.limits.resize(count);
  near.least.resize(count);
  near.transparent_at.resize(count, -1);
  near.colors = table.colors();
  near.transparent = choices.transparent;
  near.nearest = std::move(nearest);
  near.code_cost = CodeCost(task.tolerance);
  const int tolerance = task.tolerance * task.tolerance;
  ForEachPlace(task.place, task.wanted->width, [&](size_t at, size_t from) {
    const uint32_t source = task.source->pixels[from];
    const uint32_t below = task.below->pixels[from];
    const uint32_t wanted = task.wanted->pixels[from];
    near.wanted[at] = source;
    if (source == kClear) {
      near.transparent_at[at] = below == kClear ? 0 : -1;
      return;
    }
    near.least[at] = wanted == kClear ? 0 : Distance(wanted, source);
    near.limits[at] = std::max(tolerance, near.least[at]);
    if (choices.transparent < 0 || below == kClear) return;
    const int distance = Distance(below, source);
    if (below == wanted || distance <= near.limits[at]) near.transparent_at[at] = distance;
  });
  return near;
}

}  // namespace

Table::Table(std::vector<uint32_t> colors)
    : colors_(std::move(colors)), depth_(DepthFor(colors_.size())), keys_(kTableSlots, kClear), places_(kTableSlots) {
  for (size_t i = 0; i < colors_.size(); ++i) {
    uint32_t slot = SlotOf(colors_[i]);
    while (keys_[slot] != kClear && keys_[slot] != colors_[i]) slot = (slot + 1) % kTableSlots;
    if (keys_[slot] == colors_[i]) continue;
    keys_[slot] = colors_[i];
    places_[slot] = static_cast<int16_t>(i);
  }
}

int Table::Find(uint32_t rgb) const {
  if (keys_.empty()) return kNone;
  for (uint32_t slot = SlotOf(rgb); keys_[slot] != kClear; slot = (slot + 1) % kTableSlots) {
    if (keys_[slot] == rgb) return places_[slot];
  }
  return kNone;
}

ColorCounts::ColorCounts(size_t most) : most_(most), keys_(kTableSlots, kClear), places_(kTableSlots) {}

void ColorCounts::Add(uint32_t rgb) {
  if (overflowed_) return;
  if (!colors_.empty() && colors_[last_].rgb == rgb) {
    ++colors_[last_].count;
    return;
  }
  uint32_t slot = SlotOf(rgb);
  while (keys_[slot] != kClear && keys_[slot] != rgb) slot = (slot + 1) % kTableSlots;
  if (keys_[slot] == kClear) {
    if (colors_.size() == most_) {
      overflowed_ = true;
      return;
    }
    keys_[slot] = rgb;
    places_[slot] = static_cast<uint16_t>(colors_.size());
    colors_.push_back({rgb, 0});
  }
  last_ = places_[slot];
  ++colors_[last_].count;
}

std::vector<uint32_t> ColorCounts::MostFrequentFirst() const {
  std::vector<Counted> sorted = colors_;
  std::stable_sort(sorted.begin(), sorted.end(),
                   [](const Counted& a, const Counted& b) { return a.count > b.count; });
  std::vector<uint32_t> colors;
  for (const Counted& color : sorted) colors.push_back(color.rgb);
  return colors;
}

namespace {

// Takes the pixels when they take fewer bytes.
void TakeSmaller(std::vector<uint8_t> pixels, int code_size, StoredImage& image) {
  const int64_t bytes = CountBytes(pixels, code_size, image.bytes);
  if (bytes >= image.bytes) return;
  image.bytes = bytes;
  image.pixels = std::move(pixels);
}

int CodeSizeOf(const Table& table) { return std::max(table.depth(), kLeastCodeSize); }

}  // namespace

StoredImage CodeImage(const Task& task, const Table& table) {
  const Choices choices = ChoicesOf(task, table);
  const int code_size = CodeSizeOf(table);
  StoredImage image;
  image.place = task.place;
  const std::vector<Way> ways = WaysFor(choices, static_cast<size_t>(task.place.width()), code_size);
  if (ways.size() == 1 && task.tolerance == 0) {
    image.pixels = PixelsOf(choices, code_size, ways[0]);
    image.bytes = StoredImage::kNotCounted;
  } else {
    image.bytes = INT64_MAX;
    for (const Way way : ways) TakeSmaller(PixelsOf(choices, code_size, way), code_size, image);
  }
  if (task.tolerance > 0) {
    TakeSmaller(MatchNearStrings(NearChoicesOf(task, table, choices, image.pixels), code_size), code_size, image);
  }
  if (choices.transparent >= 0 &&
      std::find(image.pixels.begin(), image.pixels.end(), choices.transparent) != image.pixels.end()) {
    image.transparent = choices.transparent;
  }
  return image;
}

namespace {

// The wanted colours of the pixels that must be stored, then of the others, the most frequent first. False when the
// former are more than a table with a transparent index may have.
bool ColorsOf(const Task& task, size_t most, std::vector<uint32_t>& needed, std::vector<uint32_t>& others) {
  ColorCounts must(most);
  ColorCounts may(kMostColors);
  ForEachPlace(task.place, task.wanted->width, [&](size_t, size_t from) {
    if (must.overflowed()) return;
    const uint32_t wanted = task.wanted->pixels[from];
    if (wanted != kClear) (wanted == task.below->pixels[from] ? may : must).Add(wanted);
  });
  if (must.overflowed()) return false;
  needed = must.MostFrequentFirst();
  others = may.MostFrequentFirst();
  return true;
}

}  // namespace

StoredImage CodeSmallest(const Task& task, const Table& table) {
  StoredImage image = CodeImage(task, table);
  if (task.tolerance > 0) return image;
  std::vector<uint32_t> needed;
  std::vector<uint32_t> others;
  const size_t most = (size_t{1} << (table.depth() - 1)) - 1;
  if (!ColorsOf(task, most, needed, others)) return image;
  const int depth = DepthFor(needed.size() + 1);
  // That costs 3 bytes an entry and saves less than a bit for each byte of data.
  const int64_t table_bytes = int64_t{3} << depth;
  if (image.bytes == StoredImage::kNotCounted) image.bytes = CountBytes(image.pixels, CodeSizeOf(table));
  if (table_bytes * 3 > image.bytes) return image;
  std::vector<uint32_t> colors = needed;
  for (size_t i = 0; i < others.size() && colors.size() + 1 < size_t{1} << depth; ++i) {
    if (std::find(needed.begin(), needed.end(), others[i]) == needed.end()) colors.push_back(others[i]);
  }
  const Table own_table(colors);
  StoredImage own = CodeImage(task, own_table);
  if (own.bytes == StoredImage::kNotCounted) own.bytes = CountBytes(own.pixels, CodeSizeOf(own_table));
  own.bytes += table_bytes;
  if (own.bytes >= image.bytes) return image;
  own.own_table = own_table;
  return own;
}

}  // namespace host
