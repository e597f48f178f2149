#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace host {

enum class PictureKind { kConsole, kDesktop };  // libgd images; bitmap contexts

// What kind of host to be. The defaults are a current console host that has everything.
struct HostOptions {
  std::optional<double> version = 2019.01;  // none: the host does not tell
  std::vector<std::string> without = {};    // functions, declared methods and classes that the plugin can't get
  int64_t largest_block = INT64_MAX;        // bytes; a larger MemoryBlock cannot be made
  bool trace = false;

  PictureKind pictures = PictureKind::kConsole;
  std::optional<std::string> application = {};  // application class instead of the pictures' own; empty: none
  std::optional<int64_t> picture_type = {};     // what kind pictures say they are, instead of the real one
  // Bitmap contexts only:
  uint32_t alpha_info = 2;       // as CGImageAlphaInfo counts
  uint32_t bits_per_pixel = 32;  // 24 or 32
  size_t row_padding = 0;        // bytes after each row; checked to stay untouched
};

}  // namespace host
