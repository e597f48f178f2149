#include "host/core/names.h"

#include <algorithm>
#include <utility>

namespace host {
namespace {

constexpr size_t kLeastOfBeginning = 3;  // letters that may stand for a longer name

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

// How many letters must be changed, added, left out or swapped with their neighbour.
size_t EditDistance(std::string_view a, std::string_view b) {
  std::vector<std::vector<size_t>> distance(a.size() + 1, std::vector<size_t>(b.size() + 1));
  for (size_t i = 0; i <= a.size(); ++i) distance[i][0] = i;
  for (size_t j = 0; j <= b.size(); ++j) distance[0][j] = j;
  for (size_t i = 1; i <= a.size(); ++i) {
    for (size_t j = 1; j <= b.size(); ++j) {
      const auto same = [&](size_t k, size_t l) { return Lower(a[k - 1]) == Lower(b[l - 1]); };
      size_t& least = distance[i][j];
      least =
          std::min({distance[i - 1][j] + 1, distance[i][j - 1] + 1, distance[i - 1][j - 1] + (same(i, j) ? 0 : 1)});
      if (i > 1 && j > 1 && same(i, j - 1) && same(i - 1, j)) least = std::min(least, distance[i - 2][j - 2] + 1);
    }
  }
  return distance.back().back();
}

}  // namespace

bool SameName(std::string_view a, std::string_view b) {
  if (a == b) return true;
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) { return Lower(x) == Lower(y); });
}

bool NameLess::operator()(std::string_view a, std::string_view b) const {
  return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(),
                                      [](char x, char y) { return Lower(x) < Lower(y); });
}

std::string NearestName(std::string_view wanted, const std::vector<std::string>& candidates) {
  std::string nearest;
  size_t least = (wanted.size() + 4) / 3;  // further away is another word, not a slip
  for (const std::string& candidate : candidates) {
    size_t distance = EditDistance(wanted, candidate);
    if (wanted.size() >= kLeastOfBeginning && candidate.size() > wanted.size()) {  // "Open" for "OpenAsGIFZKV"
      distance = std::min(distance, EditDistance(wanted, std::string_view(candidate).substr(0, wanted.size())) + 1);
    }
    const bool comes_first = distance == least && !nearest.empty() &&
                             std::pair(candidate.size(), candidate) < std::pair(nearest.size(), nearest);
    if (distance >= least && !comes_first) continue;
    least = distance;
    nearest = candidate;
  }
  return nearest;
}

}  // namespace host
