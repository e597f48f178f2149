#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "bridge/gif_plugin_host.h"
#include "host/host/host.h"
#include "host/host/pixels.h"

namespace host {

// A picture and, when it has one, its mask: a picture of its own, white where this one is transparent.
class Picture : public Object {
 public:
  static constexpr const char* kKind = "picture";
  using Object::Object;

  const char* kind() const override { return kKind; }
  void BeforeDeath() override;

  // Gives it new black pixels. False, with nothing changed, when there can be none of that size.
  bool Create(const HostOptions& options, int64_t width, int64_t height);
  int width() const { return width_; }  // 0 when it has no pixels yet
  int height() const { return height_; }
  bool Contains(int64_t x, int64_t y) const { return x >= 0 && x < width_ && y >= 0 && y < height_; }
  Pixels& pixels() { return *pixels_; }
  const Pixels& pixels() const { return *pixels_; }

  const Ref<Picture>& mask() const { return mask_; }
  const Ref<Picture>& MakeMask(Host& host);  // the mask, made black when there is none; null when that fails
  // False, with nothing changed, for a mask that has a mask itself, and where this one is a mask already.
  bool SetMask(Ref<Picture> mask);
  // Of pixels side by side, from (x, y) on: 0 opaque to 255 transparent, by the mask.
  void ReadTransparency(int x, int y, std::span<uint32_t> to) const;

  // Locks are counted; each must be undone while the picture lives.
  bool LockDescription(uint32_t kind, REALpictureDescription& description);
  void UnlockDescription();

 private:
  std::unique_ptr<Pixels> pixels_;
  int width_ = 0;
  int height_ = 0;
  int64_t locks_ = 0;
  Ref<Picture> mask_;
  int masked_ = 0;  // pictures whose mask this is
};

// A picture's drawing surface.
class Graphics : public Object {
 public:
  static constexpr const char* kKind = "graphics";
  using Object::Object;

  const char* kind() const override { return kKind; }

  Ref<Picture> picture;  // null for one that a script made: drawing on it does nothing
};

Ref<Picture> NewPicture(Host& host, int64_t width, int64_t height);  // null when it can't be made
Ref<Graphics> NewGraphics(Host& host, Ref<Picture> picture);

}  // namespace host
