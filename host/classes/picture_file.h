#pragma once

#include <string>

#include "host/host/picture.h"

namespace host {

// PNG files, by libgd; the mask is the file's transparency. Each gives what went wrong, or an empty text.
std::string SavePng(const Picture& picture, const std::string& path);
std::string LoadPng(Picture& picture, const std::string& path);

}  // namespace host
