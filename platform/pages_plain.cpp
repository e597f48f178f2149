#include <cstdlib>

#include "platform/pages.h"

MemoryToFill AllocateToFill(size_t size) { return {std::malloc(size), 0}; }
