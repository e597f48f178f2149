#pragma once

// Files, as each system wants to be asked for them. Paths are UTF-8.

#include <cstdio>

// What stands between a folder and a name in it; each character is one.
#if defined(_WIN32)
constexpr char kPathSeparators[] = "/\\";
#else
constexpr char kPathSeparators[] = "/";
#endif

// `fopen`; null for a path that the system has no form for.
FILE* OpenPath(const char* path, const char* mode);

// True for whatever has that name: a file, a folder, a link that leads nowhere.
bool IsThere(const char* path);

// `getc` and `putc`, without a lock: a stream is one thread's.
inline int GetByte(FILE* file) {
#if defined(_WIN32)
  return _getc_nolock(file);
#else
  return getc_unlocked(file);
#endif
}
inline int PutByte(int byte, FILE* file) {
#if defined(_WIN32)
  return _putc_nolock(byte, file);
#else
  return putc_unlocked(byte, file);
#endif
}
