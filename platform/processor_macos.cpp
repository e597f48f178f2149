// What the processor can do, which not every run-time library of a compiler finds out here.

#include <sys/sysctl.h>

#include <cstddef>
#include <string>

#include "platform/compiler.h"

#if defined(GIF_X86_KERNELS)

static bool IsSet(const std::string& name) {
  int value = 0;
  size_t size = sizeof value;
  return sysctlbyname(name.c_str(), &value, &size, nullptr, 0) == 0 && value != 0;
}

// The names are as in the compiler's own question; some have a version behind them.
bool SystemSaysProcessorHas(const char* instructions) {
  const std::string name = std::string("hw.optional.") + instructions;
  return IsSet(name) || IsSet(name + "_0");
}

#endif
