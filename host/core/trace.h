#pragma once

// The trace: one line on stderr for each call of a handler and of a host function, indented by depth.

#include <string>

#include "host/core/activity.h"

namespace host {

void EnableTrace(bool enabled);
bool IsTracing();

// A call begins ("GIFZKV.Block(GIFZKV#1, 0)") and ends; an empty result is not shown.
void TraceEnter(const std::string& call);
void TraceLeave(const std::string& result);

// A handler of the plugin's runs for as long as this lives. `arguments` gives their text and is asked only
// when tracing.
class HandlerScope {
 public:
  template <class Arguments>
  HandlerScope(const std::string& label, Arguments arguments)
      : activity_(ActivityScope::Handler(label.c_str())), traced_(IsTracing()) {
    if (traced_) TraceEnter(label + "(" + arguments() + ")");
  }
  ~HandlerScope() {
    if (traced_) TraceLeave(result_);
  }
  HandlerScope(const HandlerScope&) = delete;
  HandlerScope& operator=(const HandlerScope&) = delete;

  bool traced() const { return traced_; }
  void set_result(std::string result) { result_ = std::move(result); }

 private:
  ActivityScope activity_;
  bool traced_;
  std::string result_;
};

}  // namespace host
