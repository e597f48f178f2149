#include "host/host/folder_item.h"

#include <filesystem>
#include <system_error>

#include "host/host/path.h"

namespace host {

namespace fs = std::filesystem;

void FolderItem::set_path(std::string_view path) {
  RequirePath(path);
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

}  // namespace host
