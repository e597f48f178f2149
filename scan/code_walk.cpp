#include "scan/code_walk.h"

#include <algorithm>
#include <bit>
#include <cstring>

static_assert(std::endian::native == std::endian::little, "codes are loaded lowest byte first");

// Four codes have at most 48 bits. A load of eight bytes brings 57 at least, wherever its first bit stands.
static constexpr int32_t kBatch = 4;

// Of clear code and end code: longer than any strings that a batch can have.
static constexpr uint16_t kNoLength = UINT16_MAX / 2;
static_assert(kNoLength > kBatch * kTableSize);

CodeWalker::CodeWalker(int32_t code_size, int64_t area)
    : area_(area), code_size_(code_size), clear_code_(1 << code_size) {
  std::fill_n(lengths_, clear_code_, uint16_t{1});
  std::fill_n(lengths_ + clear_code_, kTableSize - clear_code_, kNoLength);
  walk_.highest = -1;
  walk_.full_at = walk_.over_at = -1;
  std::memset(held_ + kHeldBytes, 0, sizeof(uint64_t));
  Restart();
}

void CodeWalker::Restart() {
  next_ = clear_code_ + 1;
  width_ = code_size_ + 1;
}

uint64_t CodeWalker::BitsAt(int64_t bit) const {
  uint64_t bits = 0;
  std::memcpy(&bits, held_ + bit / 8, sizeof bits);
  return bits >> (bit % 8);
}

// Several codes of one width from each load of bits. They count when all of them are plainly sound and the image has
// room for their pixels; what they have defined else is defined once more. Stops there, near the end of the bytes,
// and where the width is about to change.
void CodeWalker::WalkBatches() {
  if (next_ == clear_code_ + 1) return;
  const int32_t width = width_, clear = clear_code_;
  const uint64_t mask = (uint64_t{1} << width) - 1;
  const int32_t last_next = (1 << width) - 1 - kBatch;
  const int64_t last_at = held_bytes_ * 8 - kBatch * width;
  uint16_t* const lengths = lengths_;
  int32_t next = next_, highest = walk_.highest;
  int64_t at = at_, room = area_ - walk_.pixels;
  uint16_t latest = latest_;
  while (next <= last_next && at <= last_at) {
    uint64_t bits = BitsAt(at);
    int32_t ahead = 0, highest_here = highest, pixels = 0;
    uint16_t length = latest;
    for (int32_t i = 0; i < kBatch; ++i, bits >>= width) {
      const auto code = static_cast<int32_t>(bits & mask);
      lengths[next + i] = static_cast<uint16_t>(length + 1);
      length = lengths[code];
      pixels += length;
      ahead |= next + i - code;  // negative: an entry not yet defined
      highest_here = std::max(highest_here, code < clear ? code : -1);
    }
    if (ahead < 0 || pixels > std::min<int64_t>(room, kBatch * kTableSize)) break;
    room -= pixels;
    next += kBatch;
    at += int64_t{kBatch} * width;
    latest = length;
    highest = highest_here;
  }
  walk_.codes += next - next_;
  walk_.pixels = area_ - room;
  walk_.highest = highest;
  next_ = next;
  at_ = at;
  latest_ = latest;
}

// One code, wherever it stands. False when it is not there as a whole, or is the last.
bool CodeWalker::WalkOne() {
  if (held_bytes_ * 8 - at_ < width_) return false;
  const int64_t begin = held_from_ * 8 + at_;
  const auto code = static_cast<int32_t>(BitsAt(at_) & ((uint64_t{1} << width_) - 1));
  const bool first = next_ == clear_code_ + 1, full = next_ == kTableSize;
  ended_ = code == clear_code_ + 1 || (first ? code > clear_code_ : code > next_);
  walk_.codes++;
  if (ended_) {
    walk_.end = code == clear_code_ + 1 ? WalkEnd::kEndCode : WalkEnd::kUndefinedCode;
    return false;
  }
  at_ += width_;
  if (code == clear_code_) {
    walk_.clear_codes++;
    Restart();
    return true;
  }
  if (!first && !full) lengths_[next_] = static_cast<uint16_t>(latest_ + 1);
  latest_ = lengths_[code];
  if (walk_.pixels < area_) {
    if (full && walk_.full_at < 0) {
      walk_.full_at = begin;
      walk_.full_pixels = walk_.pixels;
    }
    if (code < clear_code_) walk_.highest = std::max(walk_.highest, code);
  }
  walk_.pixels += latest_;
  if (walk_.pixels > area_ && walk_.over_at < 0) walk_.over_at = begin;
  if (!full && ++next_ >= 1 << width_ && width_ < kMaxCodeWidth) ++width_;
  return true;
}

// Walks all that is there and keeps the bytes that are left of a code.
void CodeWalker::WalkHeld() {
  do {
    WalkBatches();
  } while (WalkOne());
  const int64_t walked = at_ / 8;
  held_bytes_ -= walked;
  std::memmove(held_, held_ + walked, static_cast<size_t>(held_bytes_));
  held_from_ += walked;
  at_ %= 8;
}

void CodeWalker::Add(const uint8_t* bytes, int64_t count) {
  if (ended_) return;
  if (held_bytes_ + count > kHeldBytes) WalkHeld();
  if (ended_) return;
  std::memcpy(held_ + held_bytes_, bytes, static_cast<size_t>(count));
  held_bytes_ += count;
}

CodeWalk CodeWalker::Finish() {
  if (!ended_) WalkHeld();
  walk_.ended_at = held_from_ * 8 + at_;
  return walk_;
}
