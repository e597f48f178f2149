#pragma once

// The host's functions by name, one table for each group of the catalogue.

#include <span>

#include "bridge/gif_plugin_host.h"
#include "host/host/boundary.h"

namespace host {

struct HostFunction {
  const char* name;
  REALproc function;
};

std::span<const HostFunction> RegistrationFunctions();
std::span<const HostFunction> ObjectFunctions();
std::span<const HostFunction> StringFunctions();
std::span<const HostFunction> MemoryBlockFunctions();
std::span<const HostFunction> FileFunctions();
std::span<const HostFunction> PictureFunctions();

// Null when there is no function of exactly that name.
REALproc FindHostFunction(const char* name);

// For what a host function throws: its neutral result tells that memory ran out, anything else is raised as well.
void RaiseUnlessMemory();

template <auto function>
HostFunction Offered(const char* name) {
  return {name, reinterpret_cast<REALproc>(Boundary<function, RaiseUnlessMemory>::Call)};
}

}  // namespace host
