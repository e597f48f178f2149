// The class "FolderItem", as scripts and the plugin see it.

#include <stdexcept>

#include "host/classes/host_classes.h"
#include "host/classes/native.h"
#include "host/host/folder_item.h"

namespace host {
namespace {

void Construct(REALobjectStruct* self, REALstringStruct* path) {
  const String* text = Self<String>(path);
  if (text == nullptr) throw std::runtime_error("A FolderItem needs a path, not nil.");
  Self<FolderItem>(self)->set_path(text->bytes());
}

REALstringStruct* GetPath(REALobjectStruct* self, int64_t) { return StringResult(Self<FolderItem>(self)->path()); }

REALstringStruct* GetName(REALobjectStruct* self, int64_t) { return StringResult(Self<FolderItem>(self)->name()); }

int8_t GetExists(REALobjectStruct* self, int64_t) { return Self<FolderItem>(self)->Exists() ? 1 : 0; }

REALfolderItemStruct* GetParent(REALobjectStruct* self, int64_t) {
  const auto& item = *Self<FolderItem>(self);
  const Ref<FolderItem> parent = Host::Current().heap().Make<FolderItem>(item.object_class());
  parent->set_path(item.parent_path());
  return HandOut<REALfolderItemStruct>(parent);
}

}  // namespace

void AddFolderItemClass(Host& host) {
  const REALproperty properties[] = {
      PropertyRow("NativePath", "String", Native<GetPath>),
      PropertyRow("Name", "String", Native<GetName>),
      PropertyRow("Exists", "Boolean", Native<GetExists>),
      PropertyRow("Parent", "FolderItem", Native<GetParent>),
  };
  const REALmethodDefinition methods[] = {MethodRow("Constructor(path as String)", Native<Construct>)};
  AddMembers(host.AddClass("FolderItem", MakeInstance<FolderItem>), properties, methods);
}

}  // namespace host
