#pragma once

#include <cstdint>

#include "host/host/object.h"

namespace host {

// A MemoryBlock: bytes that scripts and the plugin read and write in place. Bytes behind the last one guard
// it.
class MemoryBlock : public Object {
 public:
  static constexpr const char* kKind = "MemoryBlock";
  using Object::Object;

  const char* kind() const override { return kKind; }
  void BeforeDeath() override;

  // False, with nothing changed, when that is more than the largest or the memory cannot be had. New bytes are zero.
  bool Resize(int64_t size, int64_t largest = INT64_MAX);
  int64_t size() const { return size_; }
  std::byte* bytes() const { return bytes_.get(); }  // null when empty from the start

 private:
  void CheckGuard() const;

  Memory bytes_;
  int64_t size_ = 0;
};

}  // namespace host
