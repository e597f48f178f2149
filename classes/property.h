#pragma once

// Properties, lists and clones by member pointer: what the handlers of all seven classes have in common. A number
// pairs a field of the record with the field of the instance that stands for it; the handlers, Clone and the assembly
// of documents for saving are made of such pairs:
//
//   using Width = Number<&GifScreen::width, &GifScreenInstance::width>;
//   inline int64_t GetWidth(REALobjectStruct* self, int64_t) { return Width::Get(self); }
//   inline void SetWidth(REALobjectStruct* self, int64_t, int64_t value) { Width::Set(self, value); }
//   using Fields = FieldList<Width, Height>;
//
// Getters prefer the record of an attached instance; setters write the instance's own field whatever the mode.
// Object results carry one reference for the script.

#include "bridge/exceptions.h"
#include "bridge/owner.h"
#include "classes/instance.h"
#include "classes/object_list.h"

template <typename Class, typename Value>
Class ClassOfMemberPointer(Value Class::*);  // a type in disguise, never defined

// The instance type that a member pointer belongs to.
template <auto kField>
using ClassOf = decltype(ClassOfMemberPointer(kField));

// --- Numbers ---------------------------------------------------------------------------------------------------

template <auto kRecordField, auto kOwnField>
struct Number {
  using Instance = ClassOf<kOwnField>;
  using Record = ClassOf<kRecordField>;

  static HostInteger Get(const Instance& data) { return data.record ? data.record->*kRecordField : data.*kOwnField; }
  static HostInteger Get(REALobjectStruct* self) { return Get(*DataOf<Instance>(self)); }
  static void Set(REALobjectStruct* self, HostInteger value) { DataOf<Instance>(self)->*kOwnField = value; }

  static void Copy(const Instance& from, Instance* to) { to->*kOwnField = Get(from); }
  // The instance's own value, cut to 32 bits.
  static void Assemble(const Instance& from, Record* to) {
    to->*kRecordField = static_cast<int32_t>(from.*kOwnField);
  }
};

// A boolean: the lowest byte of its field, in whatever width the field is kept.
template <auto kRecordField, auto kOwnField>
struct Flag {
  using Instance = ClassOf<kOwnField>;
  using Record = ClassOf<kRecordField>;

  static HostBoolean Get(const Instance& data) {
    return static_cast<HostBoolean>(data.record ? data.record->*kRecordField : data.*kOwnField);
  }
  static HostBoolean Get(REALobjectStruct* self) { return Get(*DataOf<Instance>(self)); }
  static void Set(REALobjectStruct* self, HostBoolean value) { DataOf<Instance>(self)->*kOwnField = value; }

  static void Copy(const Instance& from, Instance* to) { to->*kOwnField = Get(from); }
  static void Assemble(const Instance& from, Record* to) {
    to->*kRecordField = static_cast<HostBoolean>(from.*kOwnField) != 0;
  }
};

// All numbers and flags of a class.
template <typename... Fields>
struct FieldList {
  // In an instance they stand side by side, eight bytes each.
  static constexpr size_t kSize = 8 * sizeof...(Fields);

  // Gives a free-standing instance the values that the getters show of another.
  template <typename Instance>
  static void Copy(const Instance& from, Instance* to) {
    (Fields::Copy(from, to), ...);
  }
  // Gives a record the instance's own values, whatever it views.
  template <typename Instance>
  static void Assemble(const Instance& from, typename Instance::Record* to) {
    (Fields::Assemble(from, to), ...);
  }
};

// --- Objects, strings and MemoryBlocks ---------------------------------------------------------------------------

// The handle with one more reference; null for null.
template <typename Handle>
Handle* WithReference(Handle* handle) {
  return HostReference<Handle>::Share(handle).Detach();
}

// The handle stored in a field, with one more reference; null for none.
template <auto kOwnField>
auto* GetStored(REALobjectStruct* self) {
  return WithReference(DataOf<ClassOf<kOwnField>>(self)->*kOwnField);
}

// A new view of the record's child on every call. Without a record, without that child in the record, or when the
// host makes no view: the object that was stored.
template <typename Child, auto kRecordField, auto kOwnField>
REALobjectStruct* GetObject(REALobjectStruct* self) {
  using Instance = ClassOf<kOwnField>;
  const auto* record = DataOf<Instance>(self)->record;
  if (record && record->*kRecordField) {
    ObjectRef view = NewView<Child>(record->*kRecordField, OwnerOfViews<Instance>(self));
    if (view) return view.Detach();
  }
  return GetStored<kOwnField>(self);
}

// Stores the handle itself with a reference of the field's own; null clears the field.
template <auto kOwnField, typename Handle>
void SetStored(REALobjectStruct* self, Handle* value) {
  StoreField(DataOf<ClassOf<kOwnField>>(self)->*kOwnField, value);
}

// --- Lists: the blocks of a document, the sub-blocks of an extension ----------------------------------------------

template <auto kOwnList>
HostInteger CountItems(REALobjectStruct* self) {
  const auto* data = DataOf<ClassOf<kOwnList>>(self);
  return data->record ? data->record->count : CountOf(data->*kOwnList);
}

// A new view of the record's item, or the very object that was added; null for a null entry and when the host makes
// no view. Raises "OutOfBoundsException" for an index outside the list.
template <typename Child, auto kRecordItems, auto kOwnList>
REALobjectStruct* GetItem(REALobjectStruct* self, int64_t index, const char* method_name) {
  using Instance = ClassOf<kOwnList>;
  const int64_t count = CountItems<kOwnList>(self);
  if (index < 0 || index >= count) {
    RaiseOutOfBoundsException(index, count, "index", method_name);
    return nullptr;
  }
  const auto* data = DataOf<Instance>(self);
  if (!data->record) return WithReference(ObjectAt(data->*kOwnList, index));
  auto* item = (data->record->*kRecordItems)[index];
  return item ? NewView<Child>(item, OwnerOfViews<Instance>(self)).Detach() : nullptr;
}

template <auto kOwnList>
void AddItem(REALobjectStruct* self, REALobjectStruct* item) {
  AppendObject(DataOf<ClassOf<kOwnList>>(self)->*kOwnList, item);
}

// --- Clones --------------------------------------------------------------------------------------------------------

using CloneHandler = REALobjectStruct* (*)(REALobjectStruct* source);
using ItemHandler = REALobjectStruct* (*)(REALobjectStruct* self, int64_t index);

// The free-standing instance that a clone of `source` is put in; empty for a null source or when the host makes none.
template <typename Instance>
ObjectRef NewCopyOf(REALobjectStruct* source) {
  return source ? NewInstance<Instance>() : ObjectRef();
}

// A clone, with one reference for the caller, of a child just got from the source: the temporary `child` is taken
// over.
inline REALobjectStruct* CloneChild(REALobjectStruct* child, CloneHandler clone) {
  return clone(ObjectRef::Adopt(child).get());
}

// Adds a clone of each item of `source`, in order, to the free-standing `copy`. Null items stay null.
template <auto kOwnList>
void CloneItems(REALobjectStruct* source, REALobjectStruct* copy, ItemHandler get, CloneHandler clone) {
  const int64_t count = CountItems<kOwnList>(source);
  for (int64_t i = 0; i < count; ++i) {
    AddItem<kOwnList>(copy, ObjectRef::Adopt(CloneChild(get(source, i), clone)).get());
  }
}

// --- Destructors ---------------------------------------------------------------------------------------------------

// Lets go of what a view looks at: the document lives on while other views or the script hold it.
template <typename Instance>
void ReleaseView(Instance* data) {
  ReleaseOwner(data->owner);
  data->record = nullptr;
}
