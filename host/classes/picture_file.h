#pragma once

#include <string>

#include "host/host/picture.h"

namespace host {

// PNG files, by libgd; the mask is the file's transparency. A file that is replaced stays until the new one is whole.
// Each gives what went wrong, or an empty text.
std::string EncodePng(const Picture& picture, std::string& encoded);
std::string SavePng(const Picture& picture, const std::string& path);
std::string LoadPng(Picture& picture, const std::string& path);

}  // namespace host
