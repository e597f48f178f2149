#pragma once

#include <cstdint>
#include <string_view>

#include "host/host/object.h"
#include "host/host/string.h"

namespace host {

// An instance of one of the host's exception classes.
class Exception : public Object {
 public:
  static constexpr const char* kKind = "exception";
  using Object::Object;

  Ref<String> message;  // null: empty
  int64_t number = 0;
};

// Throws RaisedException with what the exception object holds.
[[noreturn]] void ThrowRaised(const Object& exception);

}  // namespace host
