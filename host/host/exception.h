#pragma once

#include <cstdint>

#include "host/host/object.h"
#include "host/host/string.h"

namespace host {

// An instance of one of the host's exception classes.
class Exception : public Object {
 public:
  static constexpr const char* kKind = "exception";
  using Object::Object;

  // Throws RaisedException with what this holds.
  [[noreturn]] void Throw() const;

  Ref<String> message;  // null: empty
  int64_t number = 0;
};

}  // namespace host
