#include "bench/turns.h"

#include <sched.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>

void PinToOneCore() {
  cpu_set_t allowed, one;
  CPU_ZERO(&one);
  sched_getaffinity(0, sizeof allowed, &allowed);
  for (int core = CPU_SETSIZE - 1; core >= 0; --core) {
    if (!CPU_ISSET(core, &allowed)) continue;
    CPU_SET(core, &one);
    sched_setaffinity(0, sizeof one, &one);
    return;
  }
}

static double ThreadSeconds() {
  timespec now;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

double SecondsOf(const std::function<void()>& work, int64_t runs) {
  const double start = ThreadSeconds();
  for (int64_t i = 0; i < runs; ++i) work();
  return (ThreadSeconds() - start) / static_cast<double>(runs);
}

std::vector<std::vector<double>> MeasureInTurns(const std::vector<std::function<void()>>& works, int rounds) {
  constexpr double kTurn = 0.02;  // seconds
  std::vector<int64_t> runs;
  for (const auto& work : works) {
    const double once = std::max(SecondsOf(work, 1), 1e-9);
    runs.push_back(std::max<int64_t>(1, std::llround(kTurn / once)));
  }
  std::vector<std::vector<double>> measured;
  for (int round = 0; round < rounds; ++round) {
    std::vector<double>& times = measured.emplace_back();
    for (size_t i = 0; i < works.size(); ++i) times.push_back(SecondsOf(works[i], runs[i]));
  }
  return measured;
}

double Median(std::vector<double> values) {
  std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2), values.end());
  return values[values.size() / 2];
}

double MedianRatio(const std::vector<std::vector<double>>& rounds, size_t of, size_t by) {
  std::vector<double> ratios;
  for (const auto& times : rounds) ratios.push_back(times[of] / times[by]);
  return Median(std::move(ratios));
}

double MedianSeconds(const std::vector<std::vector<double>>& rounds, size_t of) {
  std::vector<double> seconds;
  for (const auto& times : rounds) seconds.push_back(times[of]);
  return Median(std::move(seconds));
}

std::string Times(double ratio) {
  char text[32];
  std::snprintf(text, sizeof text, ratio < 10 ? "%.1f ×" : "%.0f ×", ratio);
  return text;
}

std::string Against(double ratio, double goal) {
  if (goal == 0) return "–";
  return Times(goal) + (ratio >= goal ? " ✓" : " missed");
}
