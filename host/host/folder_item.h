#pragma once

#include <string>

#include "host/host/object.h"

namespace host {

// A file or folder by its absolute path, existing or not.
class FolderItem : public Object {
 public:
  static constexpr const char* kKind = "FolderItem";
  using Object::Object;

  const char* kind() const override { return kKind; }

  // UTF-8; a relative one is taken from the current folder. Throws UsageError for one that no file can have.
  void set_path(std::string_view path);
  const std::string& path() const { return path_; }  // without a trailing slash, except "/" itself
  std::string name() const;
  std::string parent_path() const;
  bool Exists() const;

 private:
  std::string path_ = "/";
};

}  // namespace host
