#include "tests/oracle/slow_encoder.h"

#include <algorithm>
#include <unordered_map>

namespace {

class CodeWriter {
 public:
  explicit CodeWriter(int code_size) : code_size_(code_size) { Restart(); }

  // Codes are merged into the bits by OR, whole: what exceeds the width falls onto the codes after it.
  void Write(int code) {
    bits_.resize(std::max(bits_.size(), position_ + 32), false);
    for (int bit = 0; code >> bit != 0; ++bit) {
      if (code >> bit & 1) bits_[position_ + bit] = true;
    }
    position_ += width_;
    if (next_ >= 1 << width_) ++width_;
  }

  void Row(const Bytes& row) {
    for (const int pixel : row) Pixel(pixel);
  }

  void Pixel(int pixel) {
    if (prefix_ < 0) {
      prefix_ = pixel;
    } else if (const auto found = strings_.find(prefix_ * 256 + pixel); found != strings_.end()) {
      prefix_ = found->second;
    } else {
      Write(prefix_);
      if (next_ < 4095) {
        strings_[prefix_ * 256 + pixel] = next_++;
      } else {
        Write(1 << code_size_);
        Restart();
      }
      prefix_ = pixel;
    }
  }

  Bytes Finish() {
    if (prefix_ >= 0) Write(prefix_);
    Write((1 << code_size_) + 1);
    Bytes packed((position_ + 7) / 8);
    for (size_t i = 0; i < packed.size() * 8; ++i) {
      if (bits_[i]) packed[i / 8] = static_cast<uint8_t>(packed[i / 8] | 1 << i % 8);
    }
    return packed;
  }

 private:
  void Restart() {
    strings_.clear();
    next_ = (1 << code_size_) + 2;
    width_ = code_size_ + 1;
  }

  int code_size_;
  std::unordered_map<int, int> strings_;  // prefix code times 256 plus pixel, to code
  int next_ = 0;
  int width_ = 0;
  int prefix_ = -1;
  std::vector<bool> bits_;
  size_t position_ = 0;
};

}  // namespace

Bytes SlowImageData(int code_size, const std::vector<Bytes>& rows) {
  CodeWriter writer(code_size);
  writer.Write(1 << code_size);
  for (const Bytes& row : rows) writer.Row(row);
  const Bytes packed = writer.Finish();

  Bytes data = {static_cast<uint8_t>(code_size)};
  for (size_t start = 0; start < packed.size(); start += 255) {
    const size_t length = std::min<size_t>(255, packed.size() - start);
    data.push_back(static_cast<uint8_t>(length));
    data.insert(data.end(), packed.begin() + start, packed.begin() + start + length);
  }
  data.push_back(0);
  return data;
}
