#include "host/core/call_form.h"

#include <array>
#include <stdexcept>

namespace host {
namespace {

ffi_type* FfiType(const Type& type) {
  switch (type.kind) {
    case Type::Kind::kNothing:
      return &ffi_type_void;
    case Type::Kind::kInteger:
      return &ffi_type_sint64;
    case Type::Kind::kBoolean:
      return &ffi_type_sint8;
    case Type::Kind::kColor:
      return &ffi_type_uint32;
    case Type::Kind::kPointer:
    case Type::Kind::kString:
    case Type::Kind::kObject:
      break;
  }
  return &ffi_type_pointer;
}

}  // namespace

CallForm::CallForm(const std::vector<Type>& parameters, const Type& result) : interface_() {
  for (const Type& type : parameters) types_.push_back(FfiType(type));
  if (ffi_prep_cif(&interface_, FFI_DEFAULT_ABI, static_cast<unsigned>(types_.size()), FfiType(result),
                   types_.data()) != FFI_OK) {
    throw std::runtime_error("a handler's form can't be called on this machine");
  }
}

Slot CallForm::Call(REALproc function, std::span<Slot> arguments) const {
  std::array<void*, 8> few;  // handlers take more than that only rarely
  std::vector<void*> many(arguments.size() > few.size() ? arguments.size() : 0);
  void** addresses = many.empty() ? few.data() : many.data();
  for (size_t i = 0; i < arguments.size(); ++i) addresses[i] = &arguments[i];
  Slot result{};
  ffi_call(&interface_, function, &result, addresses);
  return result;
}

}  // namespace host
