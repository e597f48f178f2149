#include "host/host/exception.h"

#include "host/classes/native.h"

namespace host {
namespace {

REALstringStruct* GetMessage(REALobjectStruct* self, int64_t) {
  return static_cast<REALstringStruct*>(Host::Current().heap().HandOut(Self<Exception>(self)->message.get()));
}

void SetMessage(REALobjectStruct* self, int64_t, REALstringStruct* message) {
  Self<Exception>(self)->message = Ref<String>(Self<String>(message));
}

int64_t GetErrorNumber(REALobjectStruct* self, int64_t) { return Self<Exception>(self)->number; }

void SetErrorNumber(REALobjectStruct* self, int64_t, int64_t number) { Self<Exception>(self)->number = number; }

Ref<Object> Make(Heap& heap, const Class& own_class) { return heap.Make<Exception>(own_class); }

}  // namespace

void ThrowRaised(const Object& exception) {
  const auto& raised = dynamic_cast<const Exception&>(exception);
  throw RaisedException(raised.type_name(), raised.message ? raised.message->bytes() : "", raised.number);
}

void AddExceptionClasses(Host& host) {
  Class& base = host.AddClass("RuntimeException", Make);
  const REALproperty properties[] = {
      NativeProperty("Message", "String", Proc(GetMessage), Proc(SetMessage)),
      NativeProperty("ErrorNumber", "Integer", Proc(GetErrorNumber), Proc(SetErrorNumber)),
  };
  AddMembers(base, properties, {});
  for (const char* name : {"OutOfBoundsException", "OutOfMemoryException", "IllegalCastException"}) {
    host.AddClass(name, Make).superclass = &base;
  }
}

}  // namespace host
