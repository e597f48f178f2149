// Windows takes UTF-8 in none of its old calls, and long paths only in a form of their own.

#define WIN32_LEAN_AND_MEAN
#define NOMINMAX
#include <io.h>
#include <windows.h>

#include <algorithm>
#include <exception>
#include <string>
#include <string_view>

#include "platform/files.h"
#include "platform/names.h"

namespace {

constexpr size_t kLongPath =
    240;  // units from which a path gets the long form; some calls want room for a name of 8.3

bool IsDrive(std::wstring_view path) { return path.size() > 2 && path[1] == L':' && path[2] == L'\\'; }

// Long paths are looked up as they stand, without any rule for reserved names and trailing dots.
std::wstring WithoutLimit(std::wstring path) {
  if (path.size() < kLongPath || path.starts_with(L"\\\\?\\")) return path;
  if (IsDrive(path)) return L"\\\\?\\" + path;
  if (path.starts_with(L"\\\\")) return L"\\\\?\\UNC" + path.substr(1);
  return path;
}

// The path as the wide calls take it; empty when there is none, which names nothing.
std::wstring Wide(const char* path) {
  const auto units = Utf16Name(path);
  if (!units) return {};
  std::wstring wide(units->begin(), units->end());
  std::replace(wide.begin(), wide.end(), L'/', L'\\');
  return WithoutLimit(std::move(wide));
}

}  // namespace

FILE* OpenPath(const char* path, const char* mode) {
  try {
    return _wfopen(Wide(path).c_str(), std::wstring(mode, mode + std::string_view(mode).size()).c_str());
  } catch (const std::exception&) {  // no memory for the path
    return nullptr;
  }
}

bool IsThere(const char* path) { return GetFileAttributesW(Wide(path).c_str()) != INVALID_FILE_ATTRIBUTES; }
