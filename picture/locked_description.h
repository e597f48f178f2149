#pragma once

// A picture's description, locked for as long as this lives.

#include <utility>

#include "bridge/host_functions.h"

class LockedDescription {
 public:
  // Empty.
  LockedDescription() = default;
  // Asks for a description of that kind; `picture` is borrowed and must outlive this. Empty when the host
  // refuses.
  LockedDescription(REALpictureStruct* picture, int32_t kind)
      : picture_(REALLockPictureDescription(picture, &description_, kind) ? picture : nullptr), kind_(kind) {}
  LockedDescription(LockedDescription&& other) noexcept
      : description_(other.description_), picture_(std::exchange(other.picture_, nullptr)), kind_(other.kind_) {}
  LockedDescription& operator=(LockedDescription other) noexcept {
    std::swap(description_, other.description_);
    std::swap(picture_, other.picture_);
    std::swap(kind_, other.kind_);
    return *this;
  }
  ~LockedDescription() {
    if (picture_) REALUnlockPictureDescription(picture_);
  }

  explicit operator bool() const { return picture_ != nullptr; }

  int32_t width() const { return description_.width; }    // pixels, as the host describes it
  int32_t height() const { return description_.height; }  // pixels

  // Null when the host described the picture as something else than what was asked for.
  template <typename PlatformObject>
  PlatformObject* platform_object() const {
    return static_cast<int32_t>(description_.kind) == kind_
               ? static_cast<PlatformObject*>(description_.platform_object)
               : nullptr;
  }

 private:
  REALpictureDescription description_ = {};
  REALpictureStruct* picture_ = nullptr;
  int32_t kind_ = 0;
};
