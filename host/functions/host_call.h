#pragma once

// What every host function does besides its own work: it is counted, it is the current activity, and it is
// traced.

#include <string>
#include <type_traits>

#include "bridge/gif_plugin_host.h"
#include "host/core/activity.h"
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

class HostCall {
 public:
  template <class... Arguments>
  explicit HostCall(const char* name, const Arguments&... arguments)
      : activity_(ActivityScope::Function(name)),
        host_(Host::Current()),
        fails_(CountCall(name)),
        traced_(IsTracing()) {
    if (!traced_) return;
    std::string shown;
    ((shown += (shown.empty() ? "" : ", ") + Show(arguments)), ...);
    TraceEnter(Text(name, "(", shown, ")"));
  }
  ~HostCall() {
    if (traced_) TraceLeave(result_);
  }
  HostCall(const HostCall&) = delete;
  HostCall& operator=(const HostCall&) = delete;

  Host& host() const { return host_; }
  // The thing behind a handle among the arguments; null for null.
  template <class T>
  T* Find(const void* handle) const {
    return host_.heap().Find<T>(handle);
  }
  // Whether this call is to fail on demand.
  bool fails() const { return fails_; }

  // Passes the result through, noting it for the trace.
  template <class T>
  T Result(T result) {
    if (traced_) result_ = Show(result);
    return result;
  }
  // The same for a thing, which goes out with one reference for the plugin.
  template <class Handle, class T>
  Handle* HandOut(const Ref<T>& thing) {
    return Result(static_cast<Handle*>(host_.heap().HandOut(thing.get())));
  }

 private:
  bool CountCall(const char* name) const;  // whether it is the one to fail

  std::string Show(const void* handle) const;  // what it stands for, or its address
  static std::string Show(const char* text) { return text == nullptr ? "nil" : Quote(text); }
  static std::string Show(const Bytes& bytes) {
    if (bytes.data == nullptr || bytes.size < 0) return "nil";
    return Quote({static_cast<const char*>(bytes.data), static_cast<size_t>(bytes.size)});
  }
  template <class Number>
  requires std::is_arithmetic_v<Number>
  static std::string Show(Number number) { return Text(+number); }

  ActivityScope activity_;
  Host& host_;
  bool fails_;
  bool traced_;
  std::string result_;
};

}  // namespace host
