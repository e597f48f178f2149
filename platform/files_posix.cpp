#include <sys/stat.h>

#include "platform/files.h"

FILE* OpenPath(const char* path, const char* mode) { return std::fopen(path, mode); }

bool IsThere(const char* path) {
  struct stat status;
  return lstat(path, &status) == 0;
}

int64_t FileSize(FILE* file) {
  struct stat status;
  return fstat(fileno(file), &status) == 0 && S_ISREG(status.st_mode) ? status.st_size : -1;
}
