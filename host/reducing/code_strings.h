#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace host {

// The strings that an encoder of image data has at some moment, and the bits it has written by then: GIF89a,
// appendix F, with all strings cleared when code 4095 would be given away.
class CodeStrings {
 public:
  static constexpr uint32_t kNone = 0xFFFFFFFF;

  explicit CodeStrings(int code_size);

  // The code of the string `prefix` with a pixel after it, or kNone.
  uint32_t Find(uint32_t prefix, uint32_t pixel) const {
    const uint32_t entry = table_[Slot(Key(prefix, pixel))];
    return entry == kEmpty ? kNone : entry & kCodeMask;
  }
  // Writes the code of `prefix`, after which a string with `pixel` begins. Gives the code of the new string that they
  // are together; kNone when there was one, or all strings were cleared.
  uint32_t Write(uint32_t prefix, uint32_t pixel) {
    Put();
    if (next_code_ >= kLastCode) {
      Clear();
      return kNone;
    }
    const uint32_t fresh = next_code_++;
    const uint32_t slot = Slot(Key(prefix, pixel));
    if (table_[slot] != kEmpty) return kNone;
    table_[slot] = Key(prefix, pixel) << kCodeBits | fresh;
    prefixes_[fresh] = static_cast<uint16_t>(prefix);
    pixels_[fresh] = static_cast<uint8_t>(pixel);
    return fresh;
  }
  // The string in hand once a pixel follows it: a longer one, or after writing its code that pixel alone.
  uint32_t Follow(uint32_t prefix, uint32_t pixel) {
    const uint32_t slot = Slot(Key(prefix, pixel));
    if (table_[slot] != kEmpty) return table_[slot] & kCodeMask;
    Put();
    if (next_code_ >= kLastCode) {
      Clear();
    } else {
      table_[slot] = Key(prefix, pixel) << kCodeBits | next_code_++;
    }
    return pixel;
  }
  // Bits of an image that ends with the string in hand.
  int64_t BitsAtEnd() {
    Put();
    Put();
    return bits_;
  }

  int64_t bits() const { return bits_; }
  // Of a string of more than one pixel: all but the last, and the last. A code below `roots` is a pixel.
  uint32_t roots() const { return 1u << code_size_; }
  uint32_t prefix(uint32_t code) const { return prefixes_[code]; }
  uint8_t pixel(uint32_t code) const { return code < roots() ? static_cast<uint8_t>(code) : pixels_[code]; }
  bool is_empty() const { return next_code_ == roots() + 2; }

 private:
  static constexpr uint32_t kLastCode = 4095;
  static constexpr uint32_t kCodeBits = 12;
  static constexpr uint32_t kCodeMask = 0xFFF;
  static constexpr uint32_t kEmpty = 0xFFFFFFFF;
  static constexpr uint32_t kSlots = 8192;

  static uint32_t Key(uint32_t prefix, uint32_t pixel) { return prefix << 8 | pixel; }
  uint32_t Slot(uint32_t key) const {
    uint32_t slot = (key >> 6 ^ key * 0x9E37u) & (kSlots - 1);
    while (table_[slot] != kEmpty && table_[slot] >> kCodeBits != key) slot = (slot + 1) & (kSlots - 1);
    return slot;
  }
  void Put() {
    bits_ += width_;
    if (next_code_ >= limit_) limit_ = 1u << ++width_;
  }
  void Clear();

  int code_size_;
  int width_ = 0;
  uint32_t limit_ = 0;
  uint32_t next_code_ = 0;
  int64_t bits_ = 0;
  std::vector<uint32_t> table_;
  uint16_t prefixes_[4096] = {};
  uint8_t pixels_[4096] = {};
};

// The bytes that pixels take as image data, with code size and sub-blocks; of those beyond `enough` only that they
// are more.
int64_t CountBytes(std::span<const uint8_t> pixels, int code_size, int64_t enough = INT64_MAX);

}  // namespace host
