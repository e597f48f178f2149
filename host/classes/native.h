#pragma once

// For the host's own classes: their members are written in the same records and handler forms as a plugin's,
// so that scripts, loading by declaration and property access treat them alike. What their handlers throw is raised.

#include <span>
#include <string_view>

#include "bridge/definition_rows.h"
#include "host/host/boundary.h"
#include "host/host/host.h"

namespace host {

void AddMembers(Class& to, std::span<const REALproperty> properties, std::span<const REALmethodDefinition> methods);
void AddGlobalMember(Host& host, const REALmethodDefinition& method);

template <class T>
Ref<Object> MakeInstance(Heap& heap, const Class& own_class) {
  return heap.Make<T>(own_class);
}

// The T behind a handle in a native handler.
template <class T>
T* Self(const void* handle) {
  return Host::Current().heap().Find<T>(handle);
}

// A result's handle with its reference.
template <class Handle, class T>
Handle* HandOut(const Ref<T>& reference) {
  return static_cast<Handle*>(Host::Current().heap().HandOut(reference.get()));
}

REALstringStruct* StringResult(std::string_view bytes);

// Makes a handler's RaisedException, or its lack of memory, the pending exception.
void RaiseCaught();

template <auto handler>
constexpr auto* Native = Boundary<handler, RaiseCaught>::Call;

}  // namespace host
