#pragma once

// Image data made of codes: by hand, or at random with damage of every kind.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

using Bytes = std::vector<uint8_t>;

// Packs codes as a file holds them, and follows the width that the reader of the file will expect.
class CodePacker {
 public:
  explicit CodePacker(int32_t code_size) : code_size_(code_size) { Restart(); }

  void Add(int32_t code) {
    buffer_ |= static_cast<uint64_t>(code & Mask()) << bits_;
    bits_ += width_;
    for (; bits_ >= 8; bits_ -= 8, buffer_ >>= 8) bytes_.push_back(static_cast<uint8_t>(buffer_));
    if (count_++ >= 1 << width_ && width_ < 12) ++width_;
    if ((code & Mask()) == 1 << code_size_) Restart();
  }
  Bytes Finish() {
    if (bits_ > 0) bytes_.push_back(static_cast<uint8_t>(buffer_));
    return bytes_;
  }
  int32_t Mask() const { return (1 << width_) - 1; }
  int32_t NextEntry() const { return count_ - 1; }  // that the next code defines

 private:
  void Restart() {
    count_ = (1 << code_size_) + 2;
    width_ = code_size_ + 1;
  }
  int32_t code_size_, count_ = 0, width_ = 0, bits_ = 0;
  uint64_t buffer_ = 0;
  Bytes bytes_;
};

// A file with one image up to the image's data.
inline Bytes FileBefore(int32_t width, int32_t height, int32_t code_size) {
  const std::string start = {"GIF87a\x9\0\x9\0\0\0\0,\0\0\0\0", 18};  // a screen without a table
  Bytes file(start.begin(), start.end());
  for (const int32_t byte : {width, width >> 8, height, height >> 8, 0 /*packed*/, code_size}) {
    file.push_back(static_cast<uint8_t>(byte));
  }
  return file;
}

// Makes streams that get deep into a decoder's states, with damage of every kind in some of them.
class StreamMaker {
 public:
  explicit StreamMaker(uint32_t seed) : random_(seed) {}

  struct Made {
    Bytes file;
    size_t data;  // where the image's data begins
    int32_t width, height;
  };

  // Of `most` pixels or fewer, if the image is to be large: most of it then lies beyond the data.
  Made Make(int32_t most = 0) {
    const int32_t code_size = Below(12), clear = 1 << code_size;
    CodePacker packer(code_size);
    const double damage = Pick({0, 0, 0.002, 0.02, 0.2}), literals = Pick({0.02, 0.5, 0.9});
    const double own_entries = Pick({0.01, 0.3, 0.97}), clear_when_full = Pick({1, 0.5, 0.001});
    const int32_t code_count = Below(Chance(0.01) ? 9000 : Chance(0.1) ? 1000 : 60) + 1;
    std::vector<int32_t> lengths(4098, 1);  // of the strings, as if nothing were damaged
    int64_t pixels = 0;
    int32_t last = -1;
    if (Chance(0.9)) packer.Add(clear);
    for (int32_t i = 0; i < code_count && pixels < 60000; ++i) {
      const int32_t next = packer.NextEntry();
      int32_t code = 0;
      if (Chance(damage)) {
        code = std::array{clear + 1, clear, next + 1, Below(4096), Below(4096)}[static_cast<size_t>(Below(5))];
      } else if (next > 4095 && Chance(clear_when_full)) {
        code = clear;
      } else if (last < 0 || Chance(literals)) {
        code = Below(clear);
      } else {
        code = Chance(own_entries) ? next : clear + 2 + Below(next - clear - 1);
      }
      code &= packer.Mask();
      packer.Add(code);
      if (last >= 0 && next < 4096) lengths[static_cast<size_t>(next)] = lengths[static_cast<size_t>(last)] + 1;
      pixels += lengths[static_cast<size_t>(code)];
      last = code == clear ? -1 : code;
    }
    if (Chance(0.7)) packer.Add(clear + 1);

    int32_t width = Below(Chance(0.5) ? 12 : 300) + 1;
    if (most > 0) width = std::min(1 << Below(17), 0xFFFF);
    // Rows end where the data do, or a pixel before or after.
    if (Chance(most > 0 ? 0.5 : 0)) {
      width = std::clamp(static_cast<int32_t>(pixels) / (1 + Below(3)) + Below(4) - 1, 1, 0xFFFF);
    }
    auto height = static_cast<int32_t>(static_cast<double>(pixels) * Pick({0.5, 1, 1, 1.3})) / width + Below(2);
    if (most > 0) height = std::min(most >> Below(8), most) / width;
    height = std::clamp(height, 1, most > 0 ? 0xFFFF : 20000);
    return Pack(packer.Finish(), code_size, width, height);
  }

 private:
  int32_t Below(int32_t end) { return std::uniform_int_distribution<int32_t>(0, end - 1)(random_); }
  bool Chance(double chance) { return std::uniform_real_distribution<>(0, 1)(random_) < chance; }
  double Pick(std::initializer_list<double> from) { return from.begin()[Below(static_cast<int32_t>(from.size()))]; }

  // The sub-blocks, the end of the file and what may have gone wrong with it.
  Made Pack(Bytes data, int32_t code_size, int32_t width, int32_t height) {
    if (Chance(0.1)) data.insert(data.end(), static_cast<size_t>(Below(600)), 0xA5);
    Made made{FileBefore(width, height, code_size), 0, width, height};
    made.data = made.file.size();
    const int32_t largest = Below(255) + 1;
    for (size_t at = 0; at < data.size();) {
      const size_t length = std::min(data.size() - at, static_cast<size_t>(Below(largest) + 1));
      made.file.push_back(static_cast<uint8_t>(length));
      made.file.insert(made.file.end(), data.begin() + static_cast<std::ptrdiff_t>(at),
                       data.begin() + static_cast<std::ptrdiff_t>(at + length));
      at += length;
    }
    made.file.insert(made.file.end(), {0, 0x3B});
    const auto length = static_cast<int32_t>(made.file.size() - made.data);
    if (Chance(0.1)) made.file.resize(made.data + static_cast<size_t>(Below(length)));
    return made;
  }

  std::mt19937 random_;
};
