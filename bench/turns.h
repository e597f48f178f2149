#pragma once

// Measuring works in turns, so that whatever else the machine does meets all of them alike.

#include <cstdint>
#include <functional>
#include <vector>

// Stays on one core from now on.
void PinToOneCore();

// Seconds of this thread's processor time for one run of each work: `rounds` lists, one number for each work. In a
// round each work runs in turn, as often as it takes for a few milliseconds.
std::vector<std::vector<double>> MeasureInTurns(const std::vector<std::function<void()>>& works, int rounds);

// The median over all rounds of the time of one work divided by that of another.
double MedianRatio(const std::vector<std::vector<double>>& rounds, size_t of, size_t by);

// The median time of one work.
double MedianSeconds(const std::vector<std::vector<double>>& rounds, size_t of);
