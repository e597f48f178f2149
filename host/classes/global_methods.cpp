// The global methods.

#include "host/classes/host_classes.h"
#include "host/classes/native.h"

namespace host {
namespace {

int64_t LenB(REALstringStruct* string) {
  const String* text = Self<String>(string);
  return text == nullptr ? 0 : static_cast<int64_t>(text->bytes().size());
}

}  // namespace

void AddGlobalMethods(Host& host) {
  AddGlobalMember(host, GlobalMethodRow("LenB( s as string ) as integer", Native<LenB>));
}

}  // namespace host
