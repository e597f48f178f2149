#pragma once

#include <cstdint>
#include <string>
#include <variant>

#include "host/core/declaration.h"
#include "host/core/heap.h"

namespace host {

// A script's value that no handler takes: what messages call it.
struct Foreign {
  const char* type;   // "table"; lives for good
  double number = 0;  // of a "number", which is then no whole one
};

// What goes into and comes out of handlers. Nothing stands for nil as well; colours and pointers are
// integers. A reference is never null.
using Value = std::variant<std::monostate, bool, int64_t, Ref<Counted>, Foreign>;

template <class T>
Value HandleValue(const Ref<T>& reference) {
  return reference ? Value(Ref<Counted>(reference)) : Value();
}

// The T that a value refers to; null for nil and for everything else.
template <class T>
Ref<T> ValueAs(const Value& value) {
  const auto* reference = std::get_if<Ref<Counted>>(&value);
  return reference == nullptr ? Ref<T>() : Ref<T>(As<T>(reference->get()));
}

// Whether a value may be handed to a parameter (or be a result) of this type.
bool Accepts(const Type& type, const Value& value);

// "an Integer", "nil", "a GifBlockZKV": for messages.
std::string NameOf(const Value& value);
std::string WithArticle(const std::string& noun);

// One line for the trace: 12, true, nil, "GIF89a", GifBlockZKV#3.
std::string Show(const Value& value);

}  // namespace host
