#pragma once

#include <cstdint>
#include <vector>

#include "host/reducing/canvas.h"

namespace host {

// A colour table and where its colours stand in it.
class Table {
 public:
  static constexpr int kNone = -1;

  Table() = default;
  explicit Table(std::vector<uint32_t> colors);

  const std::vector<uint32_t>& colors() const { return colors_; }
  int depth() const { return depth_; }  // as files have it: the table has 2 to the power of it entries
  int Find(uint32_t rgb) const;

 private:
  std::vector<uint32_t> colors_;
  int depth_ = 1;
  std::vector<uint32_t> keys_;
  std::vector<int16_t> places_;
};

// How often each of up to 256 colours was seen.
class ColorCounts {
 public:
  explicit ColorCounts(size_t most);
  void Add(uint32_t rgb);
  bool overflowed() const { return overflowed_; }  // there were more than `most`; what is known is of no use then
  std::vector<uint32_t> MostFrequentFirst() const;

 private:
  struct Counted {
    uint32_t rgb;
    uint64_t count;
  };
  size_t most_;
  bool overflowed_ = false;
  size_t last_ = 0;
  std::vector<Counted> colors_;
  std::vector<uint32_t> keys_;
  std::vector<uint16_t> places_;
};

// An image as it is stored.
struct StoredImage {
  Rect place;
  std::vector<uint8_t> pixels;
  int transparent = -1;  // the index that shows what is below; none when negative
  int disposal = 1;      // GIF89a, section 23
  Table own_table;       // without colours where that of all images serves
  static constexpr int64_t kNotCounted = -1;
  int64_t bytes = 0;  // of its data and its table, where there was something to compare
};

// What an image has to do: what is shown before it, and what after.
struct Task {
  const Canvas* below = nullptr;
  const Canvas* wanted = nullptr;
  Rect place;
  // With a tolerance, a pixel may have any colour no further from its source than that, or than the wanted one.
  const Canvas* source = nullptr;
  int tolerance = 0;
};

// What a code is worth at that tolerance, in squared distances. Tried between a fiftieth and eight times the
// tolerance's square on a noisy film: this gave the smallest files at the same mean error.
inline int CodeCost(int tolerance) { return (tolerance * tolerance + 9) / 10; }

// Stores an image with that table, which has all wanted colours that are not below already.
StoredImage CodeImage(const Task& task, const Table& table);
// The same, with a smaller table of its own where that makes the image smaller.
StoredImage CodeSmallest(const Task& task, const Table& table);

}  // namespace host
