#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "host/options.h"

namespace host {

// The pixel memory of a picture, as the platform keeps it: zero-filled (black) when made. Coordinates are
// inside.
class Pixels {
 public:
  virtual ~Pixels() = default;

  virtual uint32_t Get(int x, int y) const = 0;       // 0xRRGGBB
  virtual void Set(int x, int y, uint32_t rgb) = 0;   // opaque
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
