#include "host/reducing/matching.h"

#include <algorithm>

#include "host/reducing/canvas.h"
#include "host/reducing/code_strings.h"

namespace host {
namespace {

// How many strings are followed at once. More give less than a thousandth.
constexpr size_t kMostFollowed = 24;

// Writes a string's pixels from `at` on.
void Spell(const CodeStrings& strings, uint32_t code, size_t length, uint8_t* at) {
  for (size_t i = length; i-- > 0; code = strings.prefix(code)) at[i] = strings.pixel(code);
}

}  // namespace

std::vector<uint8_t> TransparentRuns(const Choices& choices, size_t at_least) {
  const size_t count = choices.own.size();
  std::vector<uint8_t> pixels(count);
  const auto transparent = static_cast<uint8_t>(choices.transparent);
  for (size_t i = 0; i < count;) {
    size_t end = i;
    while (end < count && choices.free[end] != 0) ++end;
    const bool long_enough = end - i >= at_least;
    for (; i < end; ++i) {
      const bool clear = long_enough || choices.own[i] == Choices::kNoIndex;
      pixels[i] = clear ? transparent : static_cast<uint8_t>(choices.own[i]);
    }
    for (; i < count && choices.free[i] == 0; ++i) pixels[i] = static_cast<uint8_t>(choices.own[i]);
  }
  return pixels;
}

std::vector<uint8_t> MatchStrings(const Choices& choices, int code_size, Preference preference) {
  const size_t count = choices.own.size();
  std::vector<uint8_t> pixels(count);
  CodeStrings strings(code_size);
  const auto transparent = static_cast<uint32_t>(choices.transparent);
  std::vector<uint32_t> now;
  std::vector<uint32_t> next;
  uint32_t prefix = CodeStrings::kNone;
  for (size_t at = 0; at < count;) {
    now.clear();
    if (choices.own[at] != Choices::kNoIndex) now.push_back(static_cast<uint32_t>(choices.own[at]));
    if (choices.free[at] != 0) now.push_back(transparent);
    size_t length = 1;
    for (; at + length < count; ++length) {
      const int16_t own = choices.own[at + length];
      const bool free = choices.free[at + length] != 0;
      next.clear();
      for (const uint32_t code : now) {
        if (own != Choices::kNoIndex) {
          const uint32_t longer = strings.Find(code, static_cast<uint32_t>(own));
          if (longer != CodeStrings::kNone) next.push_back(longer);
        }
        if (free) {
          const uint32_t longer = strings.Find(code, transparent);
          if (longer != CodeStrings::kNone) next.push_back(longer);
        }
        if (next.size() >= kMostFollowed) break;
      }
      if (next.empty()) break;
      now.swap(next);
    }
    uint32_t code = preference == Preference::kOldest ? *std::min_element(now.begin(), now.end())
                                                      : *std::max_element(now.begin(), now.end());
    if (std::find(now.begin(), now.end(), prefix) != now.end()) code = prefix;  // it may become longer: see below
    Spell(strings, code, length, &pixels[at]);
    if (prefix != CodeStrings::kNone) {
      const uint32_t fresh = strings.Write(prefix, pixels[at]);
      if (strings.is_empty()) {  // the strings that were followed are gone
        length = 1;
        code = pixels[at];
      } else if (fresh != CodeStrings::kNone && code == prefix && at + length < count) {
        // The string that has just begun may go on in this very place.
        const size_t after = at + length;
        const auto first = static_cast<int>(pixels[at]);
        if (choices.own[after] == first || (choices.free[after] != 0 && first == choices.transparent)) {
          pixels[after] = pixels[at];
          code = fresh;
          ++length;
        }
      }
    }
    prefix = code;
    at += length;
  }
  return pixels;
}

namespace {

// Strings by what they begin with, so that those that go on from one can be gone through.
class StringTree {
 public:
  explicit StringTree(const CodeStrings& strings) : strings_(strings) { Clear(); }
  void Clear() { std::fill(std::begin(first_), std::end(first_), kEnd); }
  void Add(uint32_t prefix, uint32_t code) {
    sibling_[code] = first_[prefix];
    first_[prefix] = static_cast<uint16_t>(code);
  }
  template <class F>
  void ForEachLonger(uint32_t prefix, F f) const {
    for (uint16_t code = first_[prefix]; code != kEnd; code = sibling_[code]) f(code, strings_.pixel(code));
  }

 private:
  static constexpr uint16_t kEnd = 0xFFFF;
  const CodeStrings& strings_;
  uint16_t first_[4096];
  uint16_t sibling_[4096];
};

// A string that goes on from the one in hand, or from a pixel after its code has been written, and what that costs:
// the squared distances of its pixels, and the code.
struct Followed {
  uint32_t code;
  int64_t cost;
};

class NearMatcher {
 public:
  NearMatcher(const NearChoices& choices, int code_size)
      : choices_(choices), strings_(code_size), tree_(strings_), pixels_(choices.wanted.size()) {}

  std::vector<uint8_t> Match() {
    for (size_t at = 0; at < pixels_.size();) {
      const size_t end = at + ChooseFrom(at);
      for (; at < end; ++at) Follow(pixels_[at]);
    }
    return std::move(pixels_);
  }

 private:
  // What a pixel costs with that index, beyond the least it can cost; negative when it may not have it.
  int CostOf(size_t at, uint32_t index) const {
    int distance = -1;
    if (static_cast<int>(index) == choices_.transparent) {
      distance = choices_.transparent_at[at];
    } else if (choices_.wanted[at] != kClear && index < choices_.colors.size()) {
      distance = Distance(choices_.colors[index], choices_.wanted[at]);
      if (distance > choices_.limits[at]) distance = -1;
    }
    return distance < 0 ? -1 : std::max(0, distance - choices_.least[at]);
  }

  void Start(size_t at) {
    now_.clear();
    for (uint32_t index = 0; index < strings_.roots(); ++index) {
      const int cost = CostOf(at, index);
      if (cost >= 0) now_.push_back({index, cost + choices_.code_cost});
    }
    if (in_hand_ == CodeStrings::kNone) return;
    tree_.ForEachLonger(in_hand_, [&](uint32_t code, uint32_t index) {
      const int cost = CostOf(at, index);
      if (cost >= 0) now_.push_back({code, cost});
    });
  }

  // Writes the pixels that cost the least for each of them, and gives how many they are.
  size_t ChooseFrom(size_t at) {
    const auto cheaper = [](const Followed& a, const Followed& b) { return a.cost < b.cost; };
    Start(at);
    if (now_.empty()) {  // no colour is allowed: whatever comes nearest
      pixels_[at] = choices_.nearest[at];
      return 1;
    }
    Followed best{};
    size_t length = 0;
    for (size_t now = 1; !now_.empty(); ++now) {
      if (now_.size() > kMostFollowed) {
        std::nth_element(now_.begin(), now_.begin() + kMostFollowed, now_.end(), cheaper);
        now_.resize(kMostFollowed);
      }
      const Followed& cheapest = *std::min_element(now_.begin(), now_.end(), cheaper);
      if (length == 0 || cheapest.cost * static_cast<int64_t>(length) < best.cost * static_cast<int64_t>(now)) {
        best = cheapest;
        length = now;
      }
      if (at + now == pixels_.size()) break;
      next_.clear();
      for (const Followed& string : now_) {
        tree_.ForEachLonger(string.code, [&](uint32_t code, uint32_t index) {
          const int cost = CostOf(at + now, index);
          if (cost >= 0) next_.push_back({code, string.cost + cost});
        });
      }
      now_.swap(next_);
    }
    Spell(strings_, best.code, length, &pixels_[at]);
    return length;
  }

  void Follow(uint32_t pixel) {
    if (in_hand_ == CodeStrings::kNone) {
      in_hand_ = pixel;
      return;
    }
    const uint32_t longer = strings_.Find(in_hand_, pixel);
    if (longer != CodeStrings::kNone) {
      in_hand_ = longer;
      return;
    }
    const uint32_t fresh = strings_.Write(in_hand_, pixel);
    if (fresh == CodeStrings::kNone) {
      tree_.Clear();
    } else {
      tree_.Add(in_hand_, fresh);
    }
    in_hand_ = pixel;
  }

  const NearChoices& choices_;
  CodeStrings strings_;
  StringTree tree_;
  std::vector<uint8_t> pixels_;
  uint32_t in_hand_ = CodeStrings::kNone;  // the string whose code is still to be written
  std::vector<Followed> now_;
  std::vector<Followed> next_;
};

}  // namespace

std::vector<uint8_t> MatchNearStrings(const NearChoices& choices, int code_size) {
  return NearMatcher(choices, code_size).Match();
}

}  // namespace host
