// The class "OutputFile", as scripts see it.

#include <stdexcept>

#include "host/classes/host_classes.h"
#include "host/classes/native.h"
#include "host/core/output_file.h"
#include "host/host/object.h"
#include "host/host/path.h"
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

void Require(const std::string& problem) {
  if (!problem.empty()) throw std::runtime_error(problem);
}

// One made without a target starts when it is first asked for something.
OutputFile& File(REALobjectStruct* self) {
  auto& object = *Self<OutputFileObject>(self);
  if (!object.started) Require(object.file.Start());
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
  RequirePath(Bytes(target));
  Require(object.file.Start(Bytes(target)));
}

REALstringStruct* GetPath(REALobjectStruct* self, int64_t) { return StringResult(File(self).path()); }
void Write(REALobjectStruct* self, REALstringStruct* bytes) { Require(File(self).Write(Bytes(bytes))); }
REALstringStruct* Refusal(REALobjectStruct* self) { return StringResult(File(self).Refusal()); }
void Keep(REALobjectStruct* self) { Require(File(self).Keep()); }
void KeepNew(REALobjectStruct* self) { Require(File(self).KeepNew()); }
void Discard(REALobjectStruct* self) { File(self).Discard(); }

}  // namespace

void AddOutputFileClass(Host& host) {
  const REALproperty properties[] = {PropertyRow("Path", "String", Native<GetPath>)};
  const REALmethodDefinition methods[] = {
      MethodRow("Constructor(target as String)", Native<Construct>),
      MethodRow("Write(bytes as String)", Native<Write>),
      MethodRow("Refusal() as String", Native<Refusal>),
      MethodRow("Keep()", Native<Keep>),
      MethodRow("KeepNew()", Native<KeepNew>),
      MethodRow("Discard()", Native<Discard>),
  };
  AddMembers(host.AddClass("OutputFile", MakeInstance<OutputFileObject>), properties, methods);
}

}  // namespace host
