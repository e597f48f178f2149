#include "classes/object_list.h"

#include <exception>
#include <memory>
#include <type_traits>
#include <utility>

// Growing then hands references over instead of taking a second one for each entry.
static_assert(std::is_nothrow_move_constructible_v<RBVariantS>);

int64_t CountOf(const ObjectList* list) { return list ? static_cast<int64_t>(list->entries.size()) : 0; }

REALobjectStruct* ObjectAt(const ObjectList* list, int64_t index) {
  return list->entries[static_cast<size_t>(index)].object.get();
}

void AppendObject(ObjectList*& field, REALobjectStruct* object) {
  try {
    auto made = field ? nullptr : std::make_unique<ObjectList>();
    ObjectList* list = field ? field : made.get();
    list->entries.push_back({ObjectRef::Share(object)});
    field = made ? made.release() : field;
  } catch (const std::exception&) {  // no memory for one more entry: the list stays as it was
    return;
  }
}

void ReleaseList(ObjectList*& field) {
  const std::unique_ptr<ObjectList> list(std::exchange(field, nullptr));
  if (!list) return;
  for (RBVariantS& entry : list->entries) entry = {};
}
