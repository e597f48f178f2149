#pragma once

// Raising host exceptions. A raise makes the exception pending and returns; the handler then returns its neutral
// result and the host delivers the exception to the script.

#include <cstdint>

// Raises an exception of the named host class ("RuntimeException" when the host makes none of it) with the message,
// UTF-8 text or null, and error number 0. Raises nothing when the host makes neither.
void RaiseException(const char* class_name, const char* message);

// Raises "OutOfBoundsException" for a value that the caller found outside 0 to `count` - 1. The names may be null.
void RaiseOutOfBoundsException(int64_t value, int64_t count, const char* parameter_name, const char* method_name);

// Raises the C++ exception being handled as a host exception; to be called in a catch block only.
void RaiseCaughtException();

// Raises "OutOfMemoryException" for a MemoryBlock of `size` bytes that could not be made or reached.
void RaiseOutOfMemoryException(int64_t size);
