#include "host/core/fault.h"

#include <cstdio>
#include <cstdlib>

#include "host/core/text.h"
#include "host/core/trace.h"

namespace host {
namespace {

Activity current_activity;

}  // namespace

std::string Activity::Describe() const {
  const std::string inner = *function != '\0' ? function : "the script";
  return *handler != '\0' ? (*function != '\0' ? Text(inner, " in ", handler) : Text(handler)) : inner;
}

const Activity& CurrentActivity() { return current_activity; }

ActivityScope::ActivityScope(Activity activity) : before_(current_activity) { current_activity = activity; }

ActivityScope::~ActivityScope() { current_activity = before_; }

void Fault(const std::string& what) {
  std::fflush(stdout);
  std::fprintf(stderr, "%sfault: %s: %s\n", IsTracing() ? "\n" : "", current_activity.Describe().c_str(),
               what.c_str());
  std::fflush(nullptr);
  std::_Exit(kExitFault);
}

}  // namespace host
