#pragma once

// Names of classes, members and types: letter case never tells two of them apart.

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace host {

bool SameName(std::string_view a, std::string_view b);

struct NameLess {
  using is_transparent = void;
  bool operator()(std::string_view a, std::string_view b) const;
};

template <class T>
using NameMap = std::map<std::string, T, NameLess>;

// The candidate that a misspelt name most likely meant; empty when none comes close.
std::string NearestName(std::string_view wanted, const std::vector<std::string>& candidates);

}  // namespace host
