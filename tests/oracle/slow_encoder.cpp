#include "tests/oracle/slow_encoder.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <utility>

namespace oracle {

namespace {

constexpr int32_t kLastCode = 4095;  // when it would be given, all strings are cleared

class CodeWriter {
 public:
  explicit CodeWriter(int32_t code_size) : code_size_(code_size) { Restart(); }

  void Restart() {
    next_code = (1 << code_size_) + 2;
    width_ = code_size_ + 1;
  }
  void Put(int32_t code) {
    const size_t needed = (at_ + 13 + 7) / 8 + 1;
    if (bytes_.size() < needed) bytes_.resize(needed);
    for (size_t bit = 0; bit < 13; ++bit) {
      bytes_[(at_ + bit) / 8] |= static_cast<uint8_t>((code >> bit & 1) << (at_ + bit) % 8);
    }
    at_ += static_cast<size_t>(width_);
    if (next_code >= 1 << width_) ++width_;
  }
  std::vector<uint8_t> Bytes() {
    bytes_.resize((at_ + 7) / 8);
    return bytes_;
  }

  int32_t next_code = 0;

 private:
  int32_t code_size_, width_ = 0;
  size_t at_ = 0;  // in bits
  std::vector<uint8_t> bytes_;
};

std::vector<uint8_t> InSubBlocks(const std::vector<uint8_t>& bytes) {
  std::vector<uint8_t> cut;
  for (size_t start = 0; start < bytes.size(); start += 255) {
    const size_t length = std::min<size_t>(bytes.size() - start, 255);
    cut.push_back(static_cast<uint8_t>(length));
    for (size_t i = start; i < start + length; ++i) cut.push_back(bytes[i]);
  }
  cut.push_back(0);
  return cut;
}

}  // namespace

std::vector<uint8_t> EncodeImage(int32_t code_size, const std::vector<uint8_t>& pixels) {
  const int32_t clear = 1 << code_size;
  CodeWriter writer(code_size);
  std::map<std::pair<int32_t, uint8_t>, int32_t> strings;  // the code of a string and one pixel more
  int32_t prefix = -1;
  writer.Put(clear);
  for (const uint8_t pixel : pixels) {
    if (prefix < 0) {
      prefix = pixel;
      continue;
    }
    if (const auto found = strings.find({prefix, pixel}); found != strings.end()) {
      prefix = found->second;
      continue;
    }
    writer.Put(prefix);
    if (writer.next_code < kLastCode) {
      strings[{prefix, pixel}] = writer.next_code++;
    } else {
      writer.Put(clear);
      strings.clear();
      writer.Restart();
    }
    prefix = pixel;
  }
  if (prefix >= 0) writer.Put(prefix);
  writer.Put(clear + 1);
  return InSubBlocks(writer.Bytes());
}

}  // namespace oracle
