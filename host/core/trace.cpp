#include "host/core/trace.h"

#include <cstdio>

#include "host/core/messages.h"

namespace host {
namespace {

bool enabled = false;
bool line_is_open = false;  // the last line waits for its result
int depth = 0;

void EndLine() {
  if (line_is_open) std::fputc('\n', stderr);
  line_is_open = false;
}

}  // namespace

void EnableTrace(bool wanted) { enabled = wanted; }

bool IsTracing() { return enabled; }

void TraceEnter(const std::string& call) {
  EndLine();
  std::fprintf(stderr, "%*s%s", 2 * depth, "", Shown(call).c_str());
  line_is_open = true;
  ++depth;
}

void TraceLeave(const std::string& result) {
  --depth;
  if (!result.empty()) {
    if (!line_is_open) std::fprintf(stderr, "%*s", 2 * depth, "");
    std::fprintf(stderr, line_is_open ? " = %s" : "= %s", Shown(result).c_str());
    line_is_open = true;
  }
  EndLine();
}

}  // namespace host
