#pragma once

// Faults: a plugin broke the rules of the interface (gave up a reference too often, used a dead handle, wrote
// past its data). Nothing can be trusted afterwards, so the program stops at once.

#include <string>

namespace host {

constexpr int kExitFault = 70;  // the program's exit status after a fault
constexpr int kExitLeak = 71;   // ... and when something was still alive at the end

// What is being done on the plugin's behalf or by it. The texts live as long as the host.
struct Activity {
  const char* function = "";  // the host function that the plugin called, or what the host itself does
  const char* handler = "";   // the plugin's handler that runs around it

  std::string Describe() const;
};

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

// Says on stderr what was attempted and why it is wrong, then ends the process with kExitFault.
[[noreturn]] void Fault(const std::string& what);

}  // namespace host
