#include "host/reducing/quantiser.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "host/reducing/canvas.h"

namespace host {
namespace {

constexpr size_t kMostSeen = 16384;  // colours that are kept apart
constexpr int kSlotBits = 16;
constexpr uint32_t kSlots = 1u << kSlotBits;
constexpr int kBits = 6;  // of each primary colour in a cell's number: its pixels count as their mean
constexpr uint32_t kCells = 1u << 3 * kBits;

using Point = Quantiser::Point;

struct Cluster {
  size_t begin = 0;
  size_t end = 0;
  double error = 0;  // the sum of squared distances from the mean
  int axis = 0;      // along which it is the widest
};

uint32_t CellOf(uint32_t rgb) {
  return (rgb >> (24 - kBits) & 0x3F) << 2 * kBits | (rgb >> (16 - kBits) & 0x3F) << kBits |
         (rgb >> (8 - kBits) & 0x3F);
}

Cluster Measured(const std::vector<Point>& points, size_t begin, size_t end) {
  double count = 0;
  std::array<double, 3> sum{};
  std::array<double, 3> squares{};
  for (size_t i = begin; i < end; ++i) {
    count += points[i].count;
    for (size_t k = 0; k < 3; ++k) {
      const double weighted = double{points[i].count} * points[i].at[k];
      sum[k] += weighted;
      squares[k] += weighted * points[i].at[k];
    }
  }
  Cluster cluster{begin, end, 0, 0};
  double widest = -1;
  for (size_t k = 0; k < 3; ++k) {
    const double error = squares[k] - sum[k] * sum[k] / count;
    cluster.error += error;
    if (error > widest) {
      widest = error;
      cluster.axis = static_cast<int>(k);
    }
  }
  return cluster;
}

// Where to cut a cluster, sorted along its axis, so that the errors of both parts add up to the least.
size_t BestCut(const std::vector<Point>& points, const Cluster& cluster) {
  const auto axis = static_cast<size_t>(cluster.axis);
  double total = 0;
  double count = 0;
  for (size_t i = cluster.begin; i < cluster.end; ++i) {
    count += points[i].count;
    total += double{points[i].count} * points[i].at[axis];
  }
  double left = 0;
  double left_count = 0;
  double best = -1;
  size_t cut = cluster.begin + 1;
  for (size_t i = cluster.begin; i + 1 < cluster.end; ++i) {
    left_count += points[i].count;
    left += double{points[i].count} * points[i].at[axis];
    const double right = total - left;
    const double gain = left * left / left_count + right * right / (count - left_count);
    if (gain > best) {
      best = gain;
      cut = i + 1;
    }
  }
  return cut;
}

uint32_t Packed(const std::array<double, 3>& sum, double count) {
  uint32_t rgb = 0;
  for (const double part : sum) {
    rgb = rgb << 8 | static_cast<uint32_t>(std::clamp(std::lround(part / count), 0L, 255L));
  }
  return rgb;
}

uint32_t MeanOf(const std::vector<Point>& points, const Cluster& cluster) {
  std::array<double, 3> sum{};
  double count = 0;
  for (size_t i = cluster.begin; i < cluster.end; ++i) {
    count += points[i].count;
    for (size_t k = 0; k < 3; ++k) sum[k] += double{points[i].count} * points[i].at[k];
  }
  return Packed(sum, count);
}

// Cuts the cluster of the greatest error in two until there are enough.
std::vector<uint32_t> Cut(std::vector<Point>& points, size_t most) {
  const auto smaller = [](const Cluster& a, const Cluster& b) { return a.error < b.error; };
  std::vector<Cluster> clusters{Measured(points, 0, points.size())};
  while (clusters.size() < most) {
    std::pop_heap(clusters.begin(), clusters.end(), smaller);
    const Cluster cluster = clusters.back();
    if (cluster.end - cluster.begin < 2) {
      std::push_heap(clusters.begin(), clusters.end(), smaller);
      break;
    }
    const auto axis = static_cast<size_t>(cluster.axis);
    std::sort(points.begin() + static_cast<ptrdiff_t>(cluster.begin),
              points.begin() + static_cast<ptrdiff_t>(cluster.end),
              [axis](const Point& a, const Point& b) { return a.at[axis] < b.at[axis]; });
    const size_t cut = BestCut(points, cluster);
    clusters.back() = Measured(points, cluster.begin, cut);
    std::push_heap(clusters.begin(), clusters.end(), smaller);
    clusters.push_back(Measured(points, cut, cluster.end));
    std::push_heap(clusters.begin(), clusters.end(), smaller);
  }
  std::vector<uint32_t> colors;
  for (const Cluster& cluster : clusters) colors.push_back(MeanOf(points, cluster));
  return colors;
}

}  // namespace

void Quantiser::Add(uint32_t rgb, uint32_t times) {
  if (folded_) return AddToCell(rgb, times);
  if (slots_.empty()) slots_.resize(kSlots);
  uint32_t slot = rgb * 0x9E3779B1u >> (32 - kSlotBits);
  for (; slots_[slot] != 0; slot = (slot + 1) % kSlots) {
    Seen& seen = seen_[slots_[slot] - 1];
    if (seen.rgb != rgb) continue;
    seen.count += times;
    return;
  }
  if (seen_.size() == kMostSeen) {
    Fold();
    return AddToCell(rgb, times);
  }
  seen_.push_back({rgb, times});
  slots_[slot] = static_cast<uint32_t>(seen_.size());
}

void Quantiser::Fold() {
  folded_ = true;
  cells_.resize(kCells);
  for (const Seen& seen : seen_) AddToCell(seen.rgb, seen.count);
}

void Quantiser::AddToCell(uint32_t rgb, uint32_t times) {
  const uint32_t at = CellOf(rgb);
  Cell& cell = cells_[at];
  if (cell.count == 0) used_.push_back(at);
  constexpr uint32_t kWithin = (1u << (8 - kBits)) - 1;
  cell.count += times;
  cell.red += (rgb >> 16 & kWithin) * times;
  cell.green += (rgb >> 8 & kWithin) * times;
  cell.blue += (rgb & kWithin) * times;
}

void Quantiser::AddRow(const uint32_t* colors, size_t count) {
  size_t i = 0;
  while (i < count && !folded_) {
    size_t end = i + 1;
    while (end < count && colors[end] == colors[i]) ++end;
    if (colors[i] != kClear) Add(colors[i], static_cast<uint32_t>(end - i));
    i = end;
  }
  if (i < count) AddSome(colors + i, count - i);
}

// Of so many pixels two in five tell enough, taken without a pattern that pictures may have, too.
void Quantiser::AddSome(const uint32_t* colors, size_t count) {
  for (size_t i = random_ >> 30; i < count; i += 1 + (random_ >> 30)) {
    random_ = random_ * 1664525 + 1013904223;
    if (colors[i] != kClear) AddToCell(colors[i], 1);
  }
}

std::vector<Point> Quantiser::Points() const {
  std::vector<Point> points;
  const auto part = [](uint32_t value) { return static_cast<float>(value & 0xFF); };
  if (!folded_) {
    for (const Seen& seen : seen_) {
      points.push_back({{part(seen.rgb >> 16), part(seen.rgb >> 8), part(seen.rgb)}, static_cast<float>(seen.count)});
    }
    return points;
  }
  for (const uint32_t at : used_) {
    const Cell& cell = cells_[at];
    const auto mean = [&](int shift, uint32_t sum) {
      return part((at >> shift & 0x3F) << (8 - kBits)) + static_cast<float>(sum) / static_cast<float>(cell.count);
    };
    points.push_back(
        {{mean(2 * kBits, cell.red), mean(kBits, cell.green), mean(0, cell.blue)}, static_cast<float>(cell.count)});
  }
  return points;
}

std::vector<uint32_t> Quantiser::Choose(size_t most) const {
  std::vector<uint32_t> colors;
  if (HasAtMost(most)) {
    for (const Seen& seen : seen_) colors.push_back(seen.rgb);
    return colors;
  }
  std::vector<Point> points = Points();
  colors = Cut(points, most);
  return Settled(points, colors);
}

}  // namespace host
