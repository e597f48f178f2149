// The exception classes, as scripts and the plugin see them.

#include "host/classes/host_classes.h"
#include "host/classes/native.h"
#include "host/host/exception.h"

namespace host {
namespace {

REALstringStruct* GetMessage(REALobjectStruct* self, int64_t) {
  return HandOut<REALstringStruct>(Self<Exception>(self)->message);
}

void SetMessage(REALobjectStruct* self, int64_t, REALstringStruct* message) {
  Self<Exception>(self)->message = Ref<String>(Self<String>(message));
}

int64_t GetErrorNumber(REALobjectStruct* self, int64_t) { return Self<Exception>(self)->number; }

void SetErrorNumber(REALobjectStruct* self, int64_t, int64_t number) { Self<Exception>(self)->number = number; }

}  // namespace

void AddExceptionClasses(Host& host) {
  Class& base = host.AddClass("RuntimeException", MakeInstance<Exception>);
  const REALproperty properties[] = {
      PropertyRow("Message", "String", Native<GetMessage>, Native<SetMessage>),
      PropertyRow("ErrorNumber", "Integer", Native<GetErrorNumber>, Native<SetErrorNumber>),
  };
  AddMembers(base, properties, {});
  for (const char* name : {"OutOfBoundsException", "OutOfMemoryException", "IllegalCastException"}) {
    host.AddClass(name, MakeInstance<Exception>).superclass = &base;
  }
}

}  // namespace host
