#include "host/host/object.h"

#include <algorithm>
#include <new>

#include "host/core/bytes.h"
#include "host/core/fault.h"
#include "host/core/text.h"
#include "host/core/trace.h"

namespace host {
namespace {

constexpr size_t kGuardSize = 32;
constexpr std::byte kGuardByte{0xA5};

}  // namespace

int64_t InstanceOffset(size_t class_number) { return 16 + 16 * static_cast<int64_t>(class_number % 3); }

size_t Instance::HandleSize(const Class& own_class) {
  const REALclassDefinition& definition = *own_class.definition;
  if (definition.instance_size < 0 || definition.instance_size > INT32_MAX) throw std::bad_alloc();
  return static_cast<size_t>(definition.instance_offset + definition.instance_size) + kGuardSize;
}

void Instance::PutGuards() {
  std::fill(bytes(), bytes() + data_begin(), kGuardByte);
  std::fill_n(bytes() + data_end(), kGuardSize, kGuardByte);
}

Ref<Object> Instance::New(Heap& heap, const Class& own_class) {
  Ref<Instance> made = heap.Make<Instance>(own_class);
  made->PutGuards();
  return made;
}

size_t Instance::data_begin() const { return static_cast<size_t>(object_class().definition->instance_offset); }

size_t Instance::data_end() const {
  return data_begin() + static_cast<size_t>(object_class().definition->instance_size);
}

void Instance::BeforeDeath() {
  const Class& own_class = object_class();
  if (own_class.definition->destructor != nullptr) {
    const HandlerScope scope(own_class.destructor_label, [this] { return Describe(); });
    reinterpret_cast<void (*)(void*)>(own_class.definition->destructor)(handle());
  }
  if (!AllAre(bytes(), data_begin(), kGuardByte) || !AllAre(bytes() + data_end(), kGuardSize, kGuardByte)) {
    Fault(Text("something was written outside the instance data of ", Describe()));
  }
}

}  // namespace host
