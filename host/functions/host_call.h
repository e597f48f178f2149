#pragma once

// What every host function does besides its own work: it is counted, it is the current activity, and it is
// traced.

#include <string>
#include <string_view>
#include <type_traits>

#include "bridge/host_records.h"
#include "host/core/fault.h"
#include "host/core/text.h"
#include "host/core/trace.h"
#include "host/host/host.h"
#include "host/host/string.h"

namespace host {

// Bytes with a length, to be shown as such.
struct Bytes {
  const void* data;
  int64_t size;
};

std::string ShowHandle(const void* handle);  // what it stands for, or its address

inline std::string ShowArgument(const char* text) { return text == nullptr ? "nil" : Quote(text); }
inline std::string ShowArgument(const Bytes& bytes) {
  if (bytes.data == nullptr || bytes.size < 0) return "nil";
  return Quote({static_cast<const char*>(bytes.data), static_cast<size_t>(bytes.size)});
}
inline std::string ShowArgument(const void* pointer) { return ShowHandle(pointer); }
template <class Number>
requires std::is_arithmetic_v<Number> std::string ShowArgument(Number number) { return Text(+number); }

class HostCall {
 public:
  template <class... Arguments>
  explicit HostCall(const char* name, const Arguments&... arguments)
      : activity_(ActivityScope::Function(name)), fails_(CountCall(name)), traced_(IsTracing()) {
    if (!traced_) return;
    std::string shown;
    ((shown += (shown.empty() ? "" : ", ") + ShowArgument(arguments)), ...);
    TraceEnter(Text(name, "(", shown, ")"));
  }
  ~HostCall() {
    if (traced_) TraceLeave(result_);
  }
  HostCall(const HostCall&) = delete;
  HostCall& operator=(const HostCall&) = delete;

  // Whether this call is to fail on demand.
  bool fails() const { return fails_; }

  // Passes the result through, noting it for the trace.
  template <class T>
  T Result(T result) {
    if (traced_) result_ = ShowArgument(result);
    return result;
  }
  // The same for a thing, which goes out with one reference for the plugin.
  template <class Handle, class T>
  Handle* HandOut(const Ref<T>& thing) {
    return Result(static_cast<Handle*>(Host::Current().heap().HandOut(thing.get())));
  }

 private:
  static bool CountCall(const char* name);  // whether it is the one to fail

  ActivityScope activity_;
  bool fails_;
  bool traced_;
  std::string result_;
};

template <class T>
T* Find(const void* handle) {
  return Host::Current().heap().Find<T>(handle);
}

}  // namespace host
