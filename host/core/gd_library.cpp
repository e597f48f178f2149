#include "host/core/gd_library.h"

#include <dlfcn.h>

#include <stdexcept>

#include "host/core/text.h"

namespace host {
namespace {

constexpr const char* kLibrary = "libgd.so.3";

[[noreturn]] void Fail() { throw std::runtime_error(Text("this needs libgd, which can't be loaded: ", dlerror())); }

void* Library() {
  static void* library = nullptr;
  if (library == nullptr) library = dlopen(kLibrary, RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) Fail();
  return library;
}

}  // namespace

void* FindGdFunction(const char* name) {
  void* function = dlsym(Library(), name);
  if (function == nullptr) Fail();
  return function;
}

}  // namespace host
