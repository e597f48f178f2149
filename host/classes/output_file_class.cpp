// The class "OutputFile", as scripts see it.

#include "host/core/output_file.h"

#include "host/host/native.h"
#include "host/host/object.h"
#include "host/host/string.h"

namespace host {
namespace {

class OutputFileObject : public Object {
 public:
  static constexpr const char* kKind = "OutputFile";
  using Object::Object;

  const char* kind() const override { return kKind; }

  OutputFile file;
  bool started = false;
};

void Raise(const std::string& message) {
  if (!message.empty()) Host::Current().Raise("RuntimeException", message);
}

// One made without a target starts when it is first asked for something.
OutputFile& File(REALobjectStruct* self) {
  auto& object = *Self<OutputFileObject>(self);
  if (!object.started) Raise(object.file.Start());
  object.started = true;
  return object.file;
}

std::string Bytes(REALstringStruct* text) {
  const String* string = Self<String>(text);
  return string == nullptr ? "" : string->bytes();
}

void Construct(REALobjectStruct* self, REALstringStruct* target) {
  auto& object = *Self<OutputFileObject>(self);
  object.started = true;
  Raise(object.file.Start(Bytes(target)));
}

REALstringStruct* GetPath(REALobjectStruct* self, int64_t) { return StringResult(File(self).path()); }
void Write(REALobjectStruct* self, REALstringStruct* bytes) { Raise(File(self).Write(Bytes(bytes))); }
REALstringStruct* Refusal(REALobjectStruct* self) { return StringResult(File(self).Refusal()); }
void Keep(REALobjectStruct* self) { Raise(File(self).Keep()); }
void KeepNew(REALobjectStruct* self) { Raise(File(self).KeepNew()); }
void Discard(REALobjectStruct* self) { File(self).Discard(); }

Ref<Object> Make(Heap& heap, const Class& own_class) { return heap.Make<OutputFileObject>(own_class); }

}  // namespace

void AddOutputFileClass(Host& host) {
  const REALproperty properties[] = {NativeProperty("Path", "String", Proc(GetPath))};
  const REALmethodDefinition methods[] = {
      NativeMethod("Constructor(target as String)", Proc(Construct)),
      NativeMethod("Write(bytes as String)", Proc(Write)),
      NativeMethod("Refusal() as String", Proc(Refusal)),
      NativeMethod("Keep()", Proc(Keep)),
      NativeMethod("KeepNew()", Proc(KeepNew)),
      NativeMethod("Discard()", Proc(Discard)),
  };
  AddMembers(host.AddClass("OutputFile", Make), properties, methods);
}

}  // namespace host
