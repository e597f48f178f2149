#include "bench/growth_plot.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <numeric>

namespace {

constexpr double kWidth = 570, kHeight = 420, kLeft = 70, kRight = 30, kTop = 30, kBottom = 50;

struct Axis {
  double low, high;  // decades
  double from, to;   // on the page
  double At(double value) const { return from + (std::log10(value) - low) / (high - low) * (to - from); }
};

Axis AxisOver(const std::vector<Growth>& curves, bool of_size, double from, double to) {
  double low = 1e9, high = -1e9;
  for (const Growth& curve : curves) {
    for (const auto& [size, seconds] : curve.points) {
      const double decade = std::log10(of_size ? size : seconds);
      low = std::min(low, std::floor(decade));
      high = std::max(high, std::ceil(decade));
    }
  }
  return {low, high, from, to};
}

std::string Text(double x, double y, const std::string& what, const char* anchor) {
  return "<text x='" + std::to_string(x) + "' y='" + std::to_string(y) + "' text-anchor='" + anchor + "'>" + what +
         "</text>\n";
}

std::string Line(double x1, double y1, double x2, double y2) {
  return "<line x1='" + std::to_string(x1) + "' y1='" + std::to_string(y1) + "' x2='" + std::to_string(x2) +
         "' y2='" + std::to_string(y2) + "' stroke='#ddd'/>\n";
}

std::string Decade(double decade) {
  return "10<tspan dy='-5' font-size='9'>" + std::to_string(static_cast<int>(decade)) + "</tspan>";
}

// Beside each curve's last point, or below the label above it.
std::vector<double> LabelHeights(const std::vector<Growth>& curves, const Axis& y) {
  constexpr double kLineHeight = 17;
  std::vector<double> heights;
  for (const Growth& curve : curves) heights.push_back(y.At(curve.points.back().second));
  std::vector<size_t> from_the_top(heights.size());
  std::iota(from_the_top.begin(), from_the_top.end(), size_t{0});
  std::sort(from_the_top.begin(), from_the_top.end(), [&](size_t a, size_t b) { return heights[a] < heights[b]; });
  for (size_t i = 1; i < from_the_top.size(); ++i) {
    double& height = heights[from_the_top[i]];
    height = std::max(height, heights[from_the_top[i - 1]] + kLineHeight);
  }
  return heights;
}

}  // namespace

void WritePlot(const std::string& path, const std::vector<Growth>& curves) {
  const Axis x = AxisOver(curves, true, kLeft, kWidth - kRight);
  const Axis y = AxisOver(curves, false, kHeight - kBottom, kTop);
  std::ofstream svg(path);
  svg << "<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 " << kWidth << " " << kHeight
      << "' font-family='sans-serif' font-size='13' fill='#333'>\n<rect width='100%' height='100%' fill='white'/>\n";
  for (double decade = x.low; decade <= x.high; ++decade) {
    const double at = x.At(std::pow(10, decade));
    svg << Line(at, kTop, at, kHeight - kBottom) << Text(at, kHeight - kBottom + 20, Decade(decade), "middle");
  }
  for (double decade = y.low; decade <= y.high; ++decade) {
    const double at = y.At(std::pow(10, decade));
    svg << Line(kLeft, at, kWidth - kRight, at) << Text(kLeft - 8, at + 4, Decade(decade), "end");
  }
  svg << Text((kLeft + kWidth - kRight) / 2, kHeight - 10, "size", "middle")
      << Text(kLeft, kTop - 12, "seconds to read", "middle");
  const char* const colours[] = {"#1f5fa8", "#c0392b", "#27834a", "#8e44ad"};
  const std::vector<double> label_heights = LabelHeights(curves, y);
  for (size_t i = 0; i < curves.size(); ++i) {
    const char* colour = colours[i % 4];
    svg << "<polyline fill='none' stroke='" << colour << "' stroke-width='2' points='";
    for (const auto& [size, seconds] : curves[i].points) svg << x.At(size) << "," << y.At(seconds) << " ";
    svg << "'/>\n";
    for (const auto& [size, seconds] : curves[i].points) {
      svg << "<circle cx='" << x.At(size) << "' cy='" << y.At(seconds) << "' r='3.5' fill='" << colour << "'/>\n";
    }
    svg << "<g fill='" << colour << "'>"
        << Text(x.At(curves[i].points.back().first) - 10, label_heights[i] + 2, curves[i].name, "end") << "</g>\n";
  }
  svg << "</svg>\n";
}
