#pragma once

// What is being done on the plugin's behalf or by it, for messages about what went wrong.

#include <cstdint>
#include <string>

namespace host {

// The texts live as long as the host.
struct Activity {
  const char* function = "";  // the host function that the plugin called, or what the host itself does
  const char* handler = "";   // the plugin's handler that runs around it

  std::string Describe() const;
  bool operator==(const Activity&) const = default;
};

// An activity as a number, for what is kept of every thing, and back. There are few: the plugin's handlers times the
// host's functions at most.
uint32_t NumberOf(const Activity& activity);
const Activity& ActivityOf(uint32_t number);

// The innermost activity now.
const Activity& CurrentActivity();

// Makes a host function (or a handler) the current one for as long as it lives.
class ActivityScope {
 public:
  static ActivityScope Function(const char* name) { return ActivityScope({name, CurrentActivity().handler}); }
  static ActivityScope Handler(const char* label) { return ActivityScope({"", label}); }
  ~ActivityScope();
  ActivityScope(const ActivityScope&) = delete;
  ActivityScope& operator=(const ActivityScope&) = delete;

 private:
  explicit ActivityScope(Activity activity);
  Activity before_;
};

}  // namespace host
