#include "host/host/object.h"

#include <algorithm>

#include "host/core/fault.h"
#include "host/core/text.h"
#include "host/core/trace.h"

namespace host {
namespace {

constexpr size_t kGuardSize = 32;
constexpr std::byte kGuardByte{0xA5};

size_t HandleSize(const REALclassDefinition& definition) {
  return static_cast<size_t>(definition.instance_offset + definition.instance_size) + kGuardSize;
}

}  // namespace

int64_t InstanceOffset(size_t class_number) { return 48 + 16 * static_cast<int64_t>(class_number % 5); }

Instance::Instance(const Class& own_class) : Object(own_class, HandleSize(*own_class.definition)) {
  std::fill(bytes(), bytes() + data_begin(), kGuardByte);
  std::fill_n(bytes() + data_end(), kGuardSize, kGuardByte);
}

Ref<Object> Instance::New(Heap& heap, const Class& own_class) { return heap.Make<Instance>(own_class); }

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
  const auto intact = [](std::byte b) { return b == kGuardByte; };
  if (!std::all_of(bytes(), bytes() + data_begin(), intact) ||
      !std::all_of(bytes() + data_end(), bytes() + data_end() + kGuardSize, intact)) {
    Fault(Text("something was written outside the instance data of ", Describe()));
  }
}

}  // namespace host
