#pragma once

// Measuring works in turns, so that whatever else the machine does meets all of them alike.

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

// Stays on one core from now on.
void PinToOneCore();

// Seconds of this thread's processor time for one run of a work.
double SecondsOf(const std::function<void()>& work, int64_t runs);

// The same for one run of each work: `rounds` lists, one number for each work. In a
// round each work runs in turn, as often as it takes for a few milliseconds.
std::vector<std::vector<double>> MeasureInTurns(const std::vector<std::function<void()>>& works, int rounds);

// The median over all rounds of the time of one work divided by that of another.
double MedianRatio(const std::vector<std::vector<double>>& rounds, size_t of, size_t by);

// The median time of one work.
double MedianSeconds(const std::vector<std::vector<double>>& rounds, size_t of);

double Median(std::vector<double> values);

// A ratio as it stands in a table, and what was to be reached: "3.2 ×", "3.0 × ✓". A goal of 0 is none.
std::string Times(double ratio);
std::string Against(double ratio, double goal);
