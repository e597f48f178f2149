#pragma once

#include <string>

#include "host/host/picture.h"

namespace host {

// PNG files, by libgd; the mask is the file's transparency. A file that is replaced stays until the new one is whole.
// Each throws std::runtime_error, saying what went wrong.
std::string EncodePng(const Picture& picture);
void SavePng(const Picture& picture, const std::string& path);
void LoadPng(Host& host, Picture& picture, const std::string& path);

}  // namespace host
