// The host function that turns a FolderItem into a file-system reference.

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "host/core/encoding.h"
#include "host/functions/host_call.h"
#include "host/functions/host_functions.h"
#include "host/host/folder_item.h"

namespace host {
namespace {

bool WritePath(const std::string& path, FSRef& reference) {
  if (path.size() >= sizeof(reference.path)) return false;
  std::memcpy(reference.path, path.c_str(), path.size() + 1);
  return true;
}

// In UTF-16. A byte that is no part of UTF-8 text becomes a lone surrogate, 0xDC00 + byte, which no text holds.
std::string Units(std::string_view name) {
  std::string units;
  while (!name.empty()) {
    const size_t length = Utf8Length(name);
    if (length > 0) {
      units += ConvertEncoding(name.substr(0, length), kEncodingUtf8, kEncodingUtf16);
    } else {
      units += name.front();
      units += static_cast<char>(0xDC);
    }
    name.remove_prefix(std::max<size_t>(length, 1));
  }
  return units;
}

bool WriteName(const std::string& name, HFSUniStr255& buffer) {
  if (name.empty()) return false;
  const std::string units = Units(name);
  if (units.size() > sizeof(buffer.unicode)) return false;
  buffer.length = static_cast<uint16_t>(units.size() / sizeof(uint16_t));
  std::memcpy(buffer.unicode, units.data(), units.size());
  return true;
}

// With a name buffer: the parent folder, which must exist, and the leaf name. Without: the item, which must
// exist.
bool Describe(const FolderItem& item, FSRef& reference, HFSUniStr255* name) {
  if (name == nullptr) return item.Exists() && WritePath(item.path(), reference);
  std::error_code error;
  return std::filesystem::is_directory(item.parent_path(), error) && WriteName(item.name(), *name) &&
         WritePath(item.parent_path(), reference);
}

int8_t REALFSRefFromFolderItem(REALfolderItemStruct* item, FSRef* reference, HFSUniStr255* name) {
  HostCall call("REALFSRefFromFolderItem", item, reference, name);
  const FolderItem* found = call.Find<FolderItem>(item);
  const bool described =
      !call.fails() && found != nullptr && reference != nullptr && Describe(*found, *reference, name);
  return call.Result<int8_t>(described);
}

}  // namespace

std::span<const HostFunction> FileFunctions() {
  static const HostFunction functions[] = {
      Offered<REALFSRefFromFolderItem>("REALFSRefFromFolderItem"),
  };
  return functions;
}

}  // namespace host
