#include "host/host/folder_item.h"

#include <filesystem>
#include <system_error>

#include "host/classes/native.h"
#include "host/host/string.h"

namespace host {
namespace {

namespace fs = std::filesystem;

void Construct(REALobjectStruct* self, REALstringStruct* path) {
  const String* text = Self<String>(path);
  Self<FolderItem>(self)->set_path(text == nullptr ? std::string() : text->bytes());
}

REALstringStruct* GetPath(REALobjectStruct* self, int64_t) { return StringResult(Self<FolderItem>(self)->path()); }

REALstringStruct* GetName(REALobjectStruct* self, int64_t) { return StringResult(Self<FolderItem>(self)->name()); }

int8_t GetExists(REALobjectStruct* self, int64_t) { return Self<FolderItem>(self)->Exists() ? 1 : 0; }

REALobjectStruct* GetParent(REALobjectStruct* self, int64_t) {
  const auto& item = *Self<FolderItem>(self);
  Ref<FolderItem> parent = Host::Current().heap().Make<FolderItem>(item.object_class());
  parent->set_path(item.parent_path());
  return Result(parent);
}

Ref<Object> Make(Heap& heap, const Class& own_class) { return heap.Make<FolderItem>(own_class); }

}  // namespace

void FolderItem::set_path(std::string_view path) {
  std::error_code error;
  path_ = fs::absolute(fs::path(path), error).string();
  if (path.empty()) path_ = fs::current_path(error).string();
  while (path_.size() > 1 && path_.back() == '/') path_.pop_back();
}

std::string FolderItem::name() const { return path_.substr(path_.rfind('/') + 1); }

std::string FolderItem::parent_path() const {
  const size_t slash = path_.rfind('/');
  return slash == 0 ? "/" : path_.substr(0, slash);
}

bool FolderItem::Exists() const {
  std::error_code error;
  return fs::exists(path_, error);
}

void AddFolderItemClass(Host& host) {
  const REALproperty properties[] = {
      NativeProperty("NativePath", "String", Proc(GetPath)),
      NativeProperty("Name", "String", Proc(GetName)),
      NativeProperty("Exists", "Boolean", Proc(GetExists)),
      NativeProperty("Parent", "FolderItem", Proc(GetParent)),
  };
  const REALmethodDefinition methods[] = {NativeMethod("Constructor(path as String)", Proc(Construct))};
  AddMembers(host.AddClass("FolderItem", Make), properties, methods);
}

}  // namespace host
