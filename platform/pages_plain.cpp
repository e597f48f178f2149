#include <cstdlib>

#include "platform/pages.h"

MemoryToFill AllocateToFill(size_t size) { return {std::malloc(size), 0}; }
MemoryToFill AllocateZerosToFill(size_t size) { return {std::calloc(1, size), 0}; }
