#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "host/host/options.h"

namespace host {

// The pixel memory of a picture, as the platform keeps it: zero-filled (black) when made. Coordinates are
// inside.
class Pixels {
 public:
  virtual ~Pixels() = default;

  // Pixels side by side, 0xRRGGBB each, from (x, y) on. What is written is opaque.
  virtual void Read(int x, int y, std::span<uint32_t> to) const = 0;
  virtual void Write(int x, int y, std::span<const uint32_t> from) = 0;
  uint32_t Get(int x, int y) const {
    uint32_t rgb = 0;
    Read(x, y, {&rgb, 1});
    return rgb;
  }
  void Set(int x, int y, uint32_t rgb) { Write(x, y, {&rgb, 1}); }
  virtual const uint8_t* At(int x, int y) const = 0;  // the pixel's bytes in memory
  virtual size_t pixel_size() const = 0;              // bytes

  virtual uint32_t description_kind() const = 0;  // kPictureKind...
  virtual void* platform_object() = 0;
  // False when something was written between the rows.
  virtual bool IsIntact() const { return true; }
};

// Of the kind that the options tell. Null when the memory cannot be had.
std::unique_ptr<Pixels> MakePixels(const HostOptions& options, int width, int height);

}  // namespace host
