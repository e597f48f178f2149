#include <sys/stat.h>

#include "platform/files.h"

FILE* OpenPath(const char* path, const char* mode) { return std::fopen(path, mode); }

bool IsThere(const char* path) {
  struct stat status;
  return lstat(path, &status) == 0;
}
