#pragma once

// Scoped ownership of a document.

#include <memory>

#include "codec/document.h"

struct DocumentDeleter {
  void operator()(Gif* gif) const { DeleteGif(gif); }
};
using DocumentHolder = std::unique_ptr<Gif, DocumentDeleter>;
