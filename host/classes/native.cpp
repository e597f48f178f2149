#include "host/classes/native.h"

#include "host/host/errors.h"

namespace host {
namespace {

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

void AddGlobalMember(Host& host, const REALmethodDefinition& method) {
  AddNative<Method>(host.globals(), method, "", false);
}

REALstringStruct* StringResult(std::string_view bytes) {
  return HandOut<REALstringStruct>(Host::Current().NewString(bytes));
}

void RaiseCaught() {
  Host& host = Host::Current();
  try {
    throw;
  } catch (const RaisedException& raised) {
    host.Raise(raised);
  } catch (const std::bad_alloc&) {
    host.Raise(RaisedException("OutOfMemoryException", "There is not enough memory."));
  } catch (const std::exception& error) {
    host.Raise(RaisedException("RuntimeException", error.what()));
  }
}

}  // namespace host
