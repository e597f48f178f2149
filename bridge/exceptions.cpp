#include "bridge/exceptions.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <stdexcept>
#include <typeinfo>

#include "bridge/strings.h"

void RaiseException(const char* class_name, const char* message) {
  StringRef text;
  if (message) {
    const auto length = static_cast<int64_t>(std::strlen(message));
    text = StringRef::Adopt(BuildEncodedString(message, length, kEncodingUtf8));
  }
  auto exception = ObjectRef::Adopt(REALnewInstance(class_name));
  if (!exception) exception = ObjectRef::Adopt(REALnewInstance("RuntimeException"));
  if (!exception) return;
  REALSetPropValueString(exception.get(), "Message", text.get());
  REALSetPropValueInteger(exception.get(), "ErrorNumber", 0);
  REALRaiseException(exception.get());
}

void RaiseOutOfBoundsException(int64_t value, int64_t count, const char* parameter_name, const char* method_name) {
  if (!parameter_name) parameter_name = "?";
  if (!method_name) method_name = "";
  const char* prefix = *method_name ? "to method " : "";
  const char* verdict = value < 0 ? "small" : "big";

  struct Free {
    void operator()(char* memory) const { std::free(memory); }
  };
  const size_t size = std::strlen(parameter_name) + std::strlen(method_name) + 200;
  const std::unique_ptr<char, Free> text(static_cast<char*>(std::calloc(size, 1)));
  if (!text) {
    RaiseException("OutOfBoundsException", "Out of Bounds");
    return;
  }
  // The blanks on both sides of an empty prefix and method name are part of the text.
  std::snprintf(text.get(), size, "Parameter %s %s%s is too %s. Range is %lld to %lld, but value is %lld.",
                parameter_name, prefix, method_name, verdict, 0LL, static_cast<long long>(count) - 1,
                static_cast<long long>(value));
  RaiseException("OutOfBoundsException", text.get());
}

void RaiseOutOfMemoryException(int64_t size) {
  char message[200];
  std::snprintf(message, sizeof message, "Failed to allocate a memoryblock with %lld bytes in size.",
                static_cast<long long>(size));
  RaiseException("OutOfMemoryException", message);
}

void RaiseCaughtException() {
  // The first match wins, so the order is that of the most to the least particular.
  try {
    throw;
  } catch (const std::bad_alloc&) {
    RaiseException("OutOfMemoryException", "Failed to allocate memory.");
  } catch (const std::range_error& e) {
    RaiseException("OutOfBoundsException", e.what());
  } catch (const std::out_of_range& e) {
    RaiseException("OutOfBoundsException", e.what());
  } catch (const std::overflow_error& e) {
    RaiseException("OutOfBoundsException", e.what());
  } catch (const std::underflow_error& e) {
    RaiseException("OutOfBoundsException", e.what());
  } catch (const std::bad_cast& e) {
    RaiseException("IllegalCastException", e.what());
  } catch (const std::exception& e) {
    RaiseException("RuntimeException", e.what());
  } catch (...) {
    RaiseException("RuntimeException", "Sorry, but there was an unnamed C++ Exception.");
  }
}
