#pragma once

// The model that all seven script classes share.
//
// An instance is in one of two modes for its whole life. Attached: a view, `record` points into a document that the
// `GIFZKV` instance `owner` owns, and the instance holds one reference on that owner, so the document outlives every
// view of it. Free-standing: `record` and `owner` are null and the fields below them are the values. Setters write
// those fields whatever the mode; getters prefer the record. So attached instances are read-only in effect, and a
// script edits a document by cloning it.
//
// The host allocates instance data zero-filled, with the sizes given at registration, and the field order is fixed:
// new-made instances are free-standing with default values. Object, string and MemoryBlock fields hold one host
// reference each while not null.

#include <cstdint>

#include "bridge/definition_rows.h"
#include "bridge/host_reference.h"
#include "codec/document.h"

using HostInteger = int64_t;

// The definition that an instance type is registered with. Each class's header declares its own; the class's source
// holds the record, and the host writes the instance offset into it at registration.
template <typename Instance>
REALclassDefinition& DefinitionOf();

// The instance data of an object of that class, which must not be null.
template <typename Instance>
Instance* DataOf(REALobjectStruct* object) {
  return reinterpret_cast<Instance*>(reinterpret_cast<char*>(object) + DefinitionOf<Instance>().instance_offset);
}

// A new free-standing instance of the class; empty when the host makes none.
template <typename Instance>
ObjectRef NewInstance() {
  return ObjectRef::Adopt(REALnewInstance(DefinitionOf<Instance>().name));
}

// A new view of a record in the document of `owner` (borrowed; may be null); empty when the host makes none.
template <typename Instance>
ObjectRef NewView(typename Instance::Record* record, REALobjectStruct* owner) {
  ObjectRef view = NewInstance<Instance>();
  if (view) {
    DataOf<Instance>(view.get())->record = record;
    StoreField(DataOf<Instance>(view.get())->owner, owner);
  }
  return view;
}

// The owner that views made from this instance get: a document is the owner of its own views.
template <typename Instance>
REALobjectStruct* OwnerOfViews(REALobjectStruct* self) {
  if constexpr (requires { Instance::owner; }) {
    return DataOf<Instance>(self)->owner;
  } else {
    return self;
  }
}
