#pragma once

// What the encoder's two ways of finding strings share: the hash table, and the codes on their way out.

#include <algorithm>
#include <bit>
#include <cstring>

#include "codec/lzw_encoder.h"

static_assert(std::endian::native == std::endian::little, "codes are stored lowest byte first");

constexpr int32_t kLastCode = 4095;  // never lasts: all strings are cleared when one gets it

// --- The hash table: a string's key is its prefix's code and its last pixel, in 20 bits; an entry is the key and the
// string's code, in 32.

constexpr int32_t kCodeBits = 12;
constexpr uint32_t kCodeMask = (1 << kCodeBits) - 1;
constexpr uint32_t kEmptyEntry = 0xFFFFFFFF;  // no key is that high: prefixes stay below 4095
constexpr uint32_t kHashBits = 14;
constexpr uint32_t kHashMask = (1 << kHashBits) - 1;

inline uint32_t Key(uint32_t prefix, uint32_t pixel) { return prefix << 8 | pixel; }

// Finds the slot that holds the key's string, or else (false) the empty one where it belongs.
inline bool FindString(const uint32_t* table, uint32_t key, uint32_t& slot) {
  for (slot = key * 0x9E3779B1U >> (32 - kHashBits);; slot = (slot + 1) & kHashMask) {
    if (table[slot] >> kCodeBits == key) return true;
    if (table[slot] == kEmptyEntry) return false;
  }
}

// The codes on their way into `block`, in local variables while a piece of a line is coded.
class CodeWriter {
 public:
  explicit CodeWriter(GifEncoder* encoder)
      : encoder_(encoder),
        end_(encoder->block + encoder->block_len),
        bits_(encoder->bit_buffer),
        bit_count_(static_cast<uint32_t>(encoder->bit_count)),
        next_code_(encoder->next_code),
        width_(encoder->code_width),
        event_(EventAt(width_)) {}

  ~CodeWriter() {
    encoder_->block_len = static_cast<int32_t>(end_ - encoder_->block);
    encoder_->bit_buffer = bits_;
    encoder_->bit_count = static_cast<int32_t>(bit_count_);
    encoder_->next_code = next_code_;
    encoder_->code_width = width_;
    encoder_->width_limit = 1 << width_;
  }

  // What the string added next gets.
  uint32_t next_code() const { return static_cast<uint32_t>(next_code_); }

  // Merges the code into the bits whole, what exceeds the width included. Stores eight bytes, of which the first few
  // count.
  void Put(uint32_t code) {
    bits_ |= static_cast<uint64_t>(code) << bit_count_;
    bit_count_ += static_cast<uint32_t>(width_);
    std::memcpy(end_, &bits_, sizeof bits_);
    end_ += bit_count_ / 8;
    bits_ >>= bit_count_ & ~7U;
    bit_count_ %= 8;
  }

  // To be called when a string has got `next_code`; false when that was one too many and all must be cleared.
  bool Advance() {
    if (next_code_++ != event_) return true;
    if (next_code_ > kLastCode) return false;
    event_ = EventAt(++width_);
    return true;
  }

 private:
  // The string after which something happens: the last of its width, or the one that is too many.
  static int32_t EventAt(int32_t width) { return std::min(1 << width, kLastCode); }

  GifEncoder* encoder_;
  uint8_t* end_;
  uint64_t bits_;
  uint32_t bit_count_;
  int32_t next_code_;
  int32_t width_;
  int32_t event_;
};
