#include "host/core/activity.h"

#include <bit>
#include <vector>

#include "host/core/text.h"

namespace host {
namespace {

Activity current_activity;

// The activities that have a number, and where each is found: an array with open addressing, at most half full.
struct Numbers {
  std::vector<Activity> known{Activity{}};
  std::vector<uint32_t> slots = std::vector<uint32_t>(256);  // a power of two; 0: empty

  uint32_t& SlotOf(const Activity& activity) {
    const uint64_t texts =
        31 * std::bit_cast<uint64_t>(activity.function) + std::bit_cast<uint64_t>(activity.handler);
    const size_t mask = slots.size() - 1;
    size_t at = static_cast<size_t>((texts * 0x9E3779B97F4A7C15u) >> 32) & mask;
    while (slots[at] != 0 && known[slots[at]] != activity) at = (at + 1) & mask;
    return slots[at];
  }

  void Grow() {
    slots.assign(2 * slots.size(), 0);
    for (uint32_t number = 1; number < known.size(); ++number) SlotOf(known[number]) = number;
  }
};

Numbers& AllNumbers() {
  static auto& numbers = *new Numbers;
  return numbers;
}

}  // namespace

uint32_t NumberOf(const Activity& activity) {
  Numbers& numbers = AllNumbers();
  if (const uint32_t number = numbers.SlotOf(activity)) return number;
  if (2 * (numbers.known.size() + 1) > numbers.slots.size()) numbers.Grow();
  numbers.known.push_back(activity);
  return numbers.SlotOf(activity) = static_cast<uint32_t>(numbers.known.size() - 1);
}

const Activity& ActivityOf(uint32_t number) { return AllNumbers().known[number]; }

std::string Activity::Describe() const {
  const std::string inner = *function != '\0' ? function : "the script";
  return *handler != '\0' ? (*function != '\0' ? Text(inner, " in ", handler) : Text(handler)) : inner;
}

const Activity& CurrentActivity() { return current_activity; }

ActivityScope::ActivityScope(Activity activity) : before_(current_activity) { current_activity = activity; }

ActivityScope::~ActivityScope() { current_activity = before_; }

}  // namespace host
