#pragma once

// Calls of C functions whose form is known only from type names at run time.

#include <ffi.h>

#include <cstdint>
#include <span>
#include <vector>

#include "bridge/gif_plugin_host.h"
#include "host/core/declaration.h"

namespace host {

// One argument or result in its C form.
union Slot {
  int64_t integer;
  int8_t boolean;
  uint32_t color;
  const void* handle;
  ffi_arg widened;  // results narrower than a register arrive in a whole one
};

class CallForm {
 public:
  CallForm(const std::vector<Type>& parameters, const Type& result);
  CallForm(const CallForm&) = delete;
  CallForm& operator=(const CallForm&) = delete;

  // `arguments` holds one slot for each parameter.
  Slot Call(REALproc function, std::span<Slot> arguments) const;

 private:
  std::vector<ffi_type*> types_;
  mutable ffi_cif interface_;  // libffi takes it without const and leaves it alone
};

}  // namespace host
