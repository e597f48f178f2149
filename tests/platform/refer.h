#pragma once

// What a host does with paths, on this platform.

#include <filesystem>
#include <string>

#include "bridge/host_functions.h"

#if defined(__APPLE__)

// In macos_stand_in.cpp.
bool SetReference(const std::string& path, FSRef* reference);

#else

inline bool SetReference(const std::string& path, FSRef* reference) {
  if (path.size() >= sizeof reference->path) return false;
  path.copy(reference->path, path.size());
  reference->path[path.size()] = 0;
  return true;
}

#endif

// The name is ASCII.
inline void MakeFolder(const std::string& path) {
  std::error_code error;
#if defined(_WIN32)
  std::filesystem::path native(path);
  std::filesystem::create_directory("\\\\?\\" + native.make_preferred().string(), error);
#else
  std::filesystem::create_directory(path, error);
#endif
}
