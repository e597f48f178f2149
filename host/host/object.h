#pragma once

#include <string>

#include "host/core/heap.h"
#include "host/host/class.h"

namespace host {

// Anything that has a class: instances of plugin classes, and the host's own MemoryBlocks, Pictures and so
// on.
class Object : public Counted {
 public:
  static constexpr const char* kKind = "object";

  explicit Object(const Class& own_class) : Counted(true), class_(own_class) {}

  const char* kind() const override { return kKind; }
  const std::string& type_name() const override { return class_.name; }
  const Class& object_class() const { return class_; }
  static bool Includes(const Counted& thing) { return thing.is_object(); }

 private:
  const Class& class_;
};

// An instance of a plugin's class. Its data lies behind the handle at the offset that was assigned to the
// class; bytes before and after the data guard it, and are checked when the instance dies.
class Instance : public Object {
 public:
  static Ref<Object> New(Heap& heap, const Class& own_class);
  void BeforeDeath() override;  // calls the plugin's destructor

 private:
  friend class Heap;
  using Object::Object;
  static size_t HandleSize(const Class& own_class);
  void PutGuards();

  std::byte* bytes() const { return static_cast<std::byte*>(handle()); }
  size_t data_begin() const;
  size_t data_end() const;
};

// The offset for the n-th class that a plugin registers, so that no two neighbours have the same.
int64_t InstanceOffset(size_t class_number);

}  // namespace host
