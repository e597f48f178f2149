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

struct Followed {
  uint32_t code;
  int64_t error;
};

// The squared distance when a pixel has that index, or -1 when it may not.
int ErrorOf(const NearChoices& choices, size_t at, uint32_t index) {
  if (static_cast<int>(index) == choices.transparent) return choices.transparent_at[at];
  if (choices.wanted[at] == kClear || index >= choices.colors.size()) return -1;
  const int distance = Distance(choices.colors[index], choices.wanted[at]);
  return distance <= choices.limits[at] ? distance : -1;
}

}  // namespace

std::vector<uint8_t> MatchNearStrings(const NearChoices& choices, std::span<const uint8_t> nearest, int code_size) {
  const size_t count = choices.wanted.size();
  std::vector<uint8_t> pixels(count);
  CodeStrings strings(code_size);
  StringTree tree(strings);
  std::vector<Followed> now;
  std::vector<Followed> next;
  const auto cheaper = [](const Followed& a, const Followed& b) { return a.error < b.error; };
  uint32_t prefix = CodeStrings::kNone;
  for (size_t at = 0; at < count;) {
    now.clear();
    for (uint32_t index = 0; index < strings.roots(); ++index) {
      const int error = ErrorOf(choices, at, index);
      if (error >= 0) now.push_back({index, error});
    }
    if (now.empty()) now.push_back({nearest[at], 0});
    size_t length = 1;
    for (; at + length < count; ++length) {
      next.clear();
      for (const Followed& string : now) {
        tree.ForEachLonger(string.code, [&](uint32_t code, uint32_t index) {
          const int error = ErrorOf(choices, at + length, index);
          if (error >= 0) next.push_back({code, string.error + error});
        });
      }
      if (next.empty()) break;
      if (next.size() > kMostFollowed) {
        std::nth_element(next.begin(), next.begin() + kMostFollowed, next.end(), cheaper);
        next.resize(kMostFollowed);
      }
      now.swap(next);
    }
    uint32_t code = std::min_element(now.begin(), now.end(), cheaper)->code;
    Spell(strings, code, length, &pixels[at]);
    if (prefix != CodeStrings::kNone) {
      const uint32_t fresh = strings.Write(prefix, pixels[at]);
      if (strings.is_empty()) {
        tree.Clear();
        length = 1;
        code = pixels[at];
      } else if (fresh != CodeStrings::kNone) {
        tree.Add(prefix, fresh);
        if (code == prefix && at + length < count && ErrorOf(choices, at + length, pixels[at]) >= 0) {
          pixels[at + length] = pixels[at];
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

}  // namespace host
