#pragma once

// Scoped ownership of what the entry points open and read.

#include <cstdio>
#include <memory>

#include "codec/document.h"

struct DocumentDeleter {
  void operator()(Gif* gif) const { DeleteGif(gif); }
};
using DocumentHolder = std::unique_ptr<Gif, DocumentDeleter>;

struct FileCloser {
  void operator()(FILE* file) const { std::fclose(file); }
};
using FileHolder = std::unique_ptr<FILE, FileCloser>;
