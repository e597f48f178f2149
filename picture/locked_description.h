#pragma once

// A picture's description, locked for as long as this lives.

#include "bridge/host_functions.h"

class LockedDescription {
 public:
  // Asks for a description of that kind; `picture` is borrowed and must outlive this. Empty when the host
  // refuses.
  LockedDescription(REALpictureStruct* picture, int32_t kind)
      : picture_(REALLockPictureDescription(picture, &description_, kind) ? picture : nullptr), kind_(kind) {}
  LockedDescription(const LockedDescription&) = delete;
  LockedDescription& operator=(const LockedDescription&) = delete;
  ~LockedDescription() {
    if (picture_) REALUnlockPictureDescription(picture_);
  }

  explicit operator bool() const { return picture_ != nullptr; }

  // Null when the host described the picture as something else than what was asked for.
  template <typename PlatformObject>
  const PlatformObject* platform_object() const {
    return static_cast<int32_t>(description_.kind) == kind_
               ? static_cast<const PlatformObject*>(description_.platform_object)
               : nullptr;
  }

 private:
  REALpictureDescription description_ = {};
  REALpictureStruct* picture_;
  int32_t kind_;
};
