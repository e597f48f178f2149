#pragma once

// The growing list of objects that documents and extensions keep their free-standing parts in. It holds one host
// reference on each object, never removes or reorders entries, and may hold null objects.

#include <cstdint>
#include <vector>

#include "bridge/host_reference.h"

struct RBVariantS {
  ObjectRef object;
  uint32_t tag = 0;
};

struct ObjectList {
  std::vector<RBVariantS> entries;
};

// Number of entries, null objects included; 0 for a null list.
int64_t CountOf(const ObjectList* list);

// The object of entry `index` (0 to count - 1), borrowed; may be null.
REALobjectStruct* ObjectAt(const ObjectList* list, int64_t index);

// Appends `object` (borrowed, may be null) with a reference of the list's own, in amortised constant time. Makes the
// list when the field is null. Without memory nothing is appended and nothing reported.
void AppendObject(ObjectList*& field, REALobjectStruct* object);

// Gives up every entry's reference, in order, frees the list and clears the field.
void ReleaseList(ObjectList*& field);
