#pragma once

#include <cstdint>
#include <memory>
#include <random>
#include <vector>

#include "host/host/picture.h"

struct gdImageStruct;

namespace host {

// The colours of some pictures, reduced by libgd where they are more than wanted, and pictures as indexes into them.
class ColorTable : public Object {
 public:
  static constexpr const char* kKind = "colour table";
  using Object::Object;
  static constexpr int kMost = 256;

  const char* kind() const override { return kKind; }

  // How many colours there may be, the transparent one among them: 2 to kMost.
  void set_most(int most) { most_ = most; }
  // Takes in a picture's colours. False once the table has been looked at: it stays as it is.
  bool Add(const Picture& picture);

  // From here on: the table as it stands when first looked at.
  int count();
  uint32_t color(int index);  // 0xRRGGBB; black for the transparent index
  int transparent();          // the last index, or -1 when no added pixel was more than half transparent
  // A byte for each pixel, row by row: the nearest colour's index.
  std::vector<uint8_t> Indexes(const Picture& picture);

 private:
  struct DestroyImage {
    void operator()(gdImageStruct* image) const;
  };
  using Image = std::unique_ptr<gdImageStruct, DestroyImage>;

  void AddColor(uint32_t rgb);
  void Fix();
  Image ReducedSample(int colors) const;
  int Nearest(uint32_t rgb);

  int most_ = kMost;
  bool has_transparent_ = false;
  std::vector<uint32_t> distinct_;  // in order of appearance; kMost + 1 stand for any number of colours
  std::vector<bool> seen_;          // by colour
  std::vector<uint32_t> sample_;    // an even choice of all pixels
  uint64_t pixels_ = 0;             // that the sample was taken of
  std::minstd_rand random_;

  Image table_;                    // a libgd image for its colour table; null until fixed
  std::vector<uint16_t> nearest_;  // by colour: the index plus one, 0 when not looked up yet
};

}  // namespace host
