#pragma once

#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include "host/host/host.h"
#include "host/host/picture.h"

namespace host {

// The screen of an animation: images are drawn on it as rows of indexes. It is kept at its own size or at a smaller
// one, where each pixel is that of the screen at its top left corner, so that what is drawn is never larger than what
// is kept.
class AnimationScreen : public Object {
 public:
  static constexpr const char* kKind = "canvas";
  using Object::Object;
  static constexpr uint32_t kNothing = 0xFFFFFFFF;  // where nothing has been drawn

  const char* kind() const override { return kKind; }

  // False for sizes that can't be; `shown` is at most as large as the screen. Throws std::bad_alloc.
  bool Create(int64_t width, int64_t height, int64_t shown_width, int64_t shown_height);
  int width() const { return static_cast<int>(columns_.size()); }  // as it is kept
  int height() const { return static_cast<int>(rows_.size()); }

  // An image, row by row from its top; rows that are missing are not drawn. Of each pixel its value is kept, but for
  // the transparent index; that of an index without a value is 0. Places are those of the screen.
  struct Area {
    int64_t left, top, width, height;
  };
  void Draw(std::span<const uint8_t> pixels, const Area& area, std::span<const uint32_t> values, int64_t transparent);
  void Fill(const Area& area, uint32_t value);
  // Keeps what is there, and brings it back.
  void Save() { saved_ = values_; }
  void Restore();

  std::span<const uint32_t> values() const { return values_; }
  Ref<Picture> ToPicture(Host& host) const;  // values as colours; throws std::bad_alloc

 private:
  // What of a side lies from `first` on, `count` long: the first and the number of the kept ones.
  static std::pair<size_t, size_t> Shown(const std::vector<int>& places, int64_t first, int64_t count);

  std::vector<int> columns_;  // of the screen, those that are kept
  std::vector<int> rows_;
  std::vector<uint32_t> values_;
  std::vector<uint32_t> saved_;
};

}  // namespace host
