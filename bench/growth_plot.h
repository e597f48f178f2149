#pragma once

// A plot of time against size, both on logarithmic axes, as SVG.

#include <string>
#include <vector>

struct Growth {
  std::string name;                               // "pixels"
  std::vector<std::pair<double, double>> points;  // size, seconds
};

void WritePlot(const std::string& path, const std::vector<Growth>& curves);
