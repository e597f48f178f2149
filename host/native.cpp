#include "host/native.h"

#include "host/string.h"

namespace host {
namespace {

int64_t LenB(REALstringStruct* string) {
  const String* text = Self<String>(string);
  return text == nullptr ? 0 : static_cast<int64_t>(text->bytes().size());
}

}  // namespace

REALstringStruct* StringResult(std::string_view bytes) {
  Host& host = Host::Current();
  return static_cast<REALstringStruct*>(host.heap().HandOut(host.NewString(bytes).get()));
}

void AddGlobalMethods(Host& host) {
  const REALmethodDefinition len_b = NativeMethod("LenB( s as string ) as integer", Proc(LenB));
  host.globals().Add(std::make_unique<Method>(len_b, "", false));
}

}  // namespace host
