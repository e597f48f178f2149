#include "host/core/activity.h"

#include "host/core/text.h"

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

}  // namespace host
