#include "host/reducing/settling.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "host/reducing/lanes.h"

namespace host {
namespace {

using Point = ColorPoint;

// Of moving colours, at first and after each jump, and of jumps: more give next to nothing.
constexpr int kRounds = 12;
constexpr int kRoundsAfterJump = 4;
constexpr int kJumps = 2;

// Gives each point to the nearest colour and moves each colour to the mean of its points, again and again. How far
// the second nearest colour is at least, by how far colours have moved since it was seen, spares most searches.
// Colours that are hardly missed jump to where errors are large: moving alone does not bring them there.
class Settling {
 public:
  Settling(const std::vector<Point>& points, const std::vector<uint32_t>& colors)
      : points_(points), count_(colors.size()), states_(points.size()) {
    for (auto& line : lines_) line.fill(kFarAway);
    for (size_t i = 0; i < count_; ++i) {
      for (size_t k = 0; k < 3; ++k) lines_[k][i] = static_cast<float>(colors[i] >> (16 - 8 * k) & 0xFF);
    }
  }

  void Run() {
    Settle(kRounds);
    for (int jump = 0; jump < kJumps && Jump(); ++jump) Settle(kRoundsAfterJump);
  }

  std::vector<uint32_t> Colors() const {
    std::vector<uint32_t> colors;
    for (size_t i = 0; i < count_; ++i) {
      uint32_t rgb = 0;
      for (const auto& line : lines_) {
        rgb = rgb << 8 | static_cast<uint32_t>(std::clamp(std::lround(line[i]), 0L, 255L));
      }
      colors.push_back(rgb);
    }
    return colors;
  }

 private:
  static constexpr float kFarAway = 1e6F;
  static constexpr float kStill = 0.05F;
  struct State {
    uint32_t own = 0;
    float others = -1;  // none is nearer than that
  };

  float DistanceTo(const Point& point, size_t i) const {
    float sum = 0;
    for (size_t k = 0; k < 3; ++k) sum += (point.at[k] - lines_[k][i]) * (point.at[k] - lines_[k][i]);
    return std::sqrt(sum);
  }

  void Search(const Point& point, State& state) const {
    const Lanes red = LanesOf(point.at[0]);
    const Lanes green = LanesOf(point.at[1]);
    const Lanes blue = LanesOf(point.at[2]);
    Lanes least = LanesOf(4 * kFarAway * kFarAway);
    Lanes second = least;
    LaneNumbers place{};
    LaneNumbers now{};
    for (size_t i = 0; i < count_; i += kLanes, now += static_cast<int32_t>(kLanes)) {
      const Lanes r = LanesAt(&lines_[0][i]) - red;
      const Lanes g = LanesAt(&lines_[1][i]) - green;
      const Lanes b = LanesAt(&lines_[2][i]) - blue;
      const Lanes d = r * r + g * g + b * b;
      const LaneNumbers nearer = d < least;
      const Lanes beaten = nearer ? least : d;
      second = beaten < second ? beaten : second;
      least = nearer ? d : least;
      place = nearer ? now : place;
    }
    size_t best = 0;
    for (size_t lane = 1; lane < kLanes; ++lane) best = least[lane] < least[best] ? lane : best;
    float others = second[best];
    for (size_t lane = 0; lane < kLanes; ++lane) {
      if (lane != best) others = std::min(others, least[lane]);
    }
    state = {static_cast<uint32_t>(place[best]) + static_cast<uint32_t>(best), std::sqrt(others)};
  }

  void Settle(int rounds) {
    Assign();
    for (int round = 0; round < rounds && Move(); ++round) Assign();
  }

  void Assign() {
    for (size_t i = 0; i < points_.size(); ++i) {
      if (DistanceTo(points_[i], states_[i].own) > states_[i].others) Search(points_[i], states_[i]);
    }
  }

  void SearchAll() {
    for (size_t i = 0; i < points_.size(); ++i) Search(points_[i], states_[i]);
  }

  // False when all colours are where they belong.
  bool Move() {
    struct Sum {
      std::array<double, 3> parts{};
      double count = 0;
    };
    std::vector<Sum> sums(count_);
    for (size_t i = 0; i < points_.size(); ++i) {
      Sum& sum = sums[states_[i].own];
      sum.count += points_[i].count;
      for (size_t k = 0; k < 3; ++k) sum.parts[k] += double{points_[i].count} * points_[i].at[k];
    }
    float furthest = 0;
    for (size_t i = 0; i < count_; ++i) {
      if (sums[i].count == 0) continue;
      Point mean{{}, 0};
      for (size_t k = 0; k < 3; ++k) mean.at[k] = static_cast<float>(sums[i].parts[k] / sums[i].count);
      furthest = std::max(furthest, DistanceTo(mean, i));
      for (size_t k = 0; k < 3; ++k) lines_[k][i] = mean.at[k];
    }
    for (State& state : states_) state.others -= furthest;
    return furthest > kStill;
  }

  // What a colour's points say of it.
  struct Share {
    double count = 0;
    std::array<double, 3> errors{};  // along each axis
    double missed = 0;               // what errors would grow by without it

    size_t widest() const {
      return static_cast<size_t>(std::max_element(errors.begin(), errors.end()) - errors.begin());
    }
    double greatest() const { return errors[widest()]; }
  };

  std::vector<Share> Shares() const {
    std::vector<Share> shares(count_);
    for (size_t i = 0; i < points_.size(); ++i) {
      Share& share = shares[states_[i].own];
      const double count = points_[i].count;
      const double others = states_[i].others;
      share.count += count;
      share.missed += count * others * others;
      for (size_t k = 0; k < 3; ++k) {
        const double off = points_[i].at[k] - lines_[k][states_[i].own];
        share.errors[k] += count * off * off;
        share.missed -= count * off * off;
      }
    }
    return shares;
  }

  // The points of a colour are parted, along the axis on which they are the widest, with another that is given up.
  void Part(const Share& share, size_t color, size_t other) {
    const auto apart = static_cast<float>(std::sqrt(share.greatest() / share.count) / 2);
    for (auto& line : lines_) line[other] = line[color];
    lines_[share.widest()][other] += apart;
    lines_[share.widest()][color] -= apart;
  }

  // False when no jump gains anything.
  bool Jump() {
    constexpr double kGain =
        0.6;  // of the greatest error, when points are parted; three quarters where they are even
    constexpr size_t kMostAtOnce = 4;
    SearchAll();
    const std::vector<Share> shares = Shares();
    std::vector<size_t> least_missed(count_);
    for (size_t i = 0; i < count_; ++i) least_missed[i] = i;
    std::vector<size_t> worst = least_missed;
    std::sort(least_missed.begin(), least_missed.end(),
              [&](size_t a, size_t b) { return shares[a].missed < shares[b].missed; });
    std::sort(worst.begin(), worst.end(),
              [&](size_t a, size_t b) { return shares[a].greatest() > shares[b].greatest(); });
    size_t jumps = 0;
    for (; jumps < count_ / kMostAtOnce; ++jumps) {
      const Share& share = shares[worst[jumps]];
      if (shares[least_missed[jumps]].missed >= kGain * share.greatest()) break;
      Part(share, worst[jumps], least_missed[jumps]);
    }
    SearchAll();
    return jumps > 0;
  }

  const std::vector<Point>& points_;
  size_t count_;
  std::array<std::array<float, 256>, 3> lines_;  // the colours' reds, greens and blues
  std::vector<State> states_;
};

}  // namespace

std::vector<uint32_t> Settled(const std::vector<Point>& points, const std::vector<uint32_t>& colors) {
  Settling settling(points, colors);
  settling.Run();
  return settling.Colors();
}

}  // namespace host
