#include "codec/picture_rows.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>

namespace {

// How many rows of a height the first pass has, the first two and the first three.
struct PassEnds {
  int32_t first, second, third;
};

PassEnds EndsOf(int64_t height) {
  const int64_t first = (height + 7) / 8, second = first + (height + 3) / 8, third = second + (height + 1) / 4;
  return {static_cast<int32_t>(first), static_cast<int32_t>(second), static_cast<int32_t>(third)};
}

// The row of a tail at a position that it covers.
RowPixels FindRow(const GifRowTail& tail, int32_t position) {
  const GifRowRun* run =
      std::upper_bound(tail.runs, tail.runs + tail.count, position,
                       [](int32_t wanted, const GifRowRun& later) { return wanted < later.first; }) -
      1;
  const int64_t index = run->alike ? 0 : position - run->first;
  return {tail.pixels + run->place + index * run->length, run->length};
}

RowPixels FindRow(const GifPicture& picture, int32_t position) {
  const int64_t start = int64_t{position} * picture.width;
  if (start < picture.pixel_count) {
    return {picture.pixels + start,
            static_cast<int32_t>(std::min<int64_t>(picture.pixel_count - start, picture.width))};
  }
  return picture.tail ? FindRow(*picture.tail, position) : RowPixels{nullptr, 0};
}

// Room doubles each time it is used up.
bool AppendPixels(GifRowTail* tail, RowPixels row) {
  const auto size = static_cast<uint64_t>(tail->size), wanted = size + static_cast<uint64_t>(row.length);
  if (wanted > (size == 0 ? 0 : std::bit_ceil(size))) {
    void* grown = std::realloc(tail->pixels, std::bit_ceil(wanted));
    if (!grown) return false;
    tail->pixels = static_cast<uint8_t*>(grown);
  }
  if (row.length > 0) std::memcpy(tail->pixels + size, row.pixels, static_cast<size_t>(row.length));
  tail->size = static_cast<int64_t>(wanted);
  return true;
}

// Rows up to that length are not worth a run of their own when they are alike.
constexpr int32_t kShortRow = 64;

}  // namespace

int32_t DisplayRow(int32_t height, bool interlaced, int32_t index) {
  if (!interlaced) return index;
  const PassEnds ends = EndsOf(height);
  if (index < ends.first) return index * 8;
  if (index < ends.second) return (index - ends.first) * 8 + 4;
  if (index < ends.third) return (index - ends.second) * 4 + 2;
  return (index - ends.third) * 2 + 1;
}

int32_t FilePosition(int32_t height, bool interlaced, int32_t row) {
  if (!interlaced) return row;
  const PassEnds ends = EndsOf(height);
  if (row % 8 == 0) return row / 8;
  if (row % 8 == 4) return ends.first + row / 8;
  if (row % 4 == 2) return ends.second + row / 4;
  return ends.third + row / 2;
}

bool RowReader::Prepare() {
  const int32_t width = picture_->width;
  if (picture_->pixel_count >= int64_t{width} * picture_->height) return true;
  if (!buffer_) buffer_.reset(NewRecord<uint8_t>(static_cast<size_t>(width)));
  return buffer_ != nullptr;
}

const uint8_t* RowReader::Row(int64_t row) {
  const int32_t width = picture_->width;
  if (row < 0 || row >= picture_->height || width < 1) return nullptr;
  const int32_t position = FilePosition(picture_->height, picture_->in_passes, static_cast<int32_t>(row));
  const RowPixels found = FindRow(*picture_, position);
  in_buffer_ = found.length != width;
  if (!in_buffer_) return found.pixels;
  if (!Prepare()) return nullptr;
  if (found.length > 0) std::memcpy(buffer_.get(), found.pixels, static_cast<size_t>(found.length));
  if (used_ > found.length) std::memset(buffer_.get() + found.length, 0, static_cast<size_t>(used_ - found.length));
  used_ = found.length;
  return buffer_.get();
}

bool AddRow(GifRowTail* tail, int32_t position, RowPixels row, bool for_good) {
  GifRowRun* last = tail->count > 0 ? &tail->runs[tail->count - 1] : nullptr;
  int64_t place = tail->size;
  if (last && last->length == row.length) {
    const RowPixels before = FindRow(*tail, position - 1);
    const bool shares =
        row.length == 0 || ((for_good || row.length > kShortRow) &&
                            std::memcmp(before.pixels, row.pixels, static_cast<size_t>(row.length)) == 0);
    if (shares && (last->alike || position - last->first == 1)) return last->alike = true;
    if (shares) {
      place = before.pixels - tail->pixels;
    } else if (!last->alike && !for_good) {
      return AppendPixels(tail, row);
    }
  }
  if (!GrowList(tail->runs, tail->count)) return false;
  if (place == tail->size && !AppendPixels(tail, row)) return false;
  const bool alike = for_good || place != tail->size - row.length;
  tail->runs[tail->count++] = {place, position, static_cast<uint16_t>(row.length), alike};
  return true;
}

void TrimTail(GifRowTail* tail) {
  if (tail->size > 0) Shrink(tail->pixels, static_cast<size_t>(tail->size));
  Shrink(tail->runs, static_cast<size_t>(tail->count) * sizeof(GifRowRun));
}
