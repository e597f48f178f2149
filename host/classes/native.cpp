#include "host/classes/native.h"

#include "host/host/string.h"

namespace host {
namespace {

int64_t LenB(REALstringStruct* string) {
  const String* text = Self<String>(string);
  return text == nullptr ? 0 : static_cast<int64_t>(text->bytes().size());
}

template <class Member, class... Arguments>
void AddNative(MemberTable& to, const Arguments&... arguments) {
  auto member = std::make_unique<Member>(arguments...);
  member->native = true;
  to.Add(std::move(member));
}

}  // namespace

void AddMembers(Class& to, std::span<const REALproperty> properties, std::span<const REALmethodDefinition> methods) {
  for (const REALproperty& property : properties) AddNative<Property>(to.members, property, to.name);
  for (const REALmethodDefinition& method : methods) AddNative<Method>(to.members, method, to.name, true);
}

REALstringStruct* StringResult(std::string_view bytes) {
  Host& host = Host::Current();
  return static_cast<REALstringStruct*>(host.heap().HandOut(host.NewString(bytes).get()));
}

void AddGlobalMethods(Host& host) {
  AddNative<Method>(host.globals(), NativeMethod("LenB( s as string ) as integer", Proc(LenB)), "", false);
}

}  // namespace host
