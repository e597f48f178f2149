#include "fuzz/flat_document.h"

#if defined(__SANITIZE_ADDRESS__)
#define GIF_FUZZ_SANITIZED 1
#elif defined(__has_feature)
#define GIF_FUZZ_SANITIZED (__has_feature(address_sanitizer) || __has_feature(memory_sanitizer))
#endif
#if defined(__has_feature)
#define GIF_FUZZ_MEMORY_SANITIZED __has_feature(memory_sanitizer)
#endif
#if !GIF_FUZZ_SANITIZED
#include <malloc.h>
#endif

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "codec/picture_rows.h"
#include "codec/reader.h"
#include "tests/oracle/slow_decoder.h"

#if GIF_FUZZ_SANITIZED
// Of the sanitizers' run-time library; not every compiler brings a header for it.
extern "C" size_t __sanitizer_get_current_allocated_bytes();
#endif

namespace {

using Document = std::unique_ptr<Gif, decltype(&DeleteGif)>;

// Bytes of the heap in use. The memory sanitizer's realloc gives nothing back: nothing can be said there.
int64_t HeapInUse() {
#if GIF_FUZZ_MEMORY_SANITIZED
  return 0;
#elif GIF_FUZZ_SANITIZED
  return static_cast<int64_t>(__sanitizer_get_current_allocated_bytes());
#else
  const struct mallinfo2 heap = mallinfo2();
  return static_cast<int64_t>(heap.uordblks + heap.hblkhd);
#endif
}

void Require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "broken: %s\n", what);
  std::abort();
}

void Append(Bytes* flat, const void* bytes, size_t length) {
  const size_t before = flat->size();
  flat->resize(before + length);
  if (bytes) std::memcpy(flat->data() + before, bytes, length);
}

void Put(Bytes* flat, int64_t value) { Append(flat, &value, sizeof value); }

void Put(Bytes* flat, const void* bytes, int64_t length) {
  Put(flat, length);
  Append(flat, bytes, static_cast<size_t>(length));
}

void PutPalette(Bytes* flat, const GifPalette* palette) {
  Require(!palette || (palette->count > 0) == (palette->colours != nullptr),
          "a palette's count goes with its entries");
  Put(flat, palette ? palette->colours : nullptr, palette ? palette->count * int64_t{sizeof(Colour)} : 0);
}

// --- Rows: in file order, without the zeros at their ends ---------------------------------------------------------

constexpr int64_t kPixelsLookedAt = 40000;

// Whether the row at that position is compared.
bool IsLookedAt(int32_t position, int32_t width, int32_t height) {
  const auto rows = static_cast<uint32_t>(std::max<int64_t>(kPixelsLookedAt / (width + 8), 1));
  if (position < static_cast<int32_t>(rows) || position == height - 1) return true;
  const uint32_t random = (static_cast<uint32_t>(position) * 31 + static_cast<uint32_t>(width)) * 0x9E3779B1;
  return (random >> 16) * static_cast<uint64_t>(height) < uint64_t{rows} << 16;
}

void PutRow(Bytes* flat, const uint8_t* row, int32_t width) {
  while (width > 0 && row[width - 1] == 0) --width;
  Put(flat, row, width);
}

void PutRows(Bytes* flat, const GifPicture& picture) {
  RowReader rows(&picture);
  for (int32_t i = 0; i < picture.height; ++i) {
    if (!IsLookedAt(i, picture.width, picture.height)) continue;
    const uint8_t* row = rows.Row(DisplayRow(picture.height, picture.interlace, i));
    Require((row != nullptr) == (picture.width > 0), "a row that has a width has pixels");
    PutRow(flat, row, picture.width);
  }
}

// The rows as the slow decoder reads them from a stream.
void PutRowsByOracle(Bytes* flat, MyFILE* stream, oracle::GifDecoder* decoder, int32_t width, int32_t height) {
  static oracle::GifDecoder before;
  Bytes row;
  bool repeats = false;
  for (int32_t i = 0; i < height; ++i) {
    if (!repeats) {
      row.assign(static_cast<size_t>(width), 0);
      const bool compares = decoder->data_ended && i % 16 == 0;  // a decoder is large
      if (compares) before = *decoder;
      if (width > 0) oracle::ReadGifLine(stream, decoder, row.data(), width);
      repeats = width < 1 || (compares && oracle::RepeatsForGood(before, *decoder));
    }
    if (IsLookedAt(i, width, height)) PutRow(flat, row.data(), width);
  }
}

void PutPicture(Bytes* flat, const GifPicture& picture) {
  for (const int32_t field : {picture.left, picture.top, picture.width, picture.height, picture.has_cmap,
                              picture.interlace, picture.sorted, picture.reserved, picture.cmap_depth}) {
    Put(flat, field);
  }
  PutPalette(flat, picture.cmap);
  PutRows(flat, picture);
}

void PutExtension(Bytes* flat, const GifExtension& extension) {
  Put(flat, extension.marker);
  for (int32_t i = 0; i < extension.count; ++i) Put(flat, extension.data[i]->bytes, extension.data[i]->length);
  Put(flat, -1);
}

// Reads a file field by field as the format lays it out.
class OracleReader {
 public:
  explicit OracleReader(const Bytes& file) : stream_{file.data(), static_cast<int64_t>(file.size()), 0, nullptr} {}

  // Makes images small in `file`, whose bytes are read; their pixels are not looked at.
  OracleReader(Bytes* file, int64_t limit) : OracleReader(*file) {
    file_ = file;
    limit_ = limit;
  }

  Bytes Read() {
    uint8_t header[8] = {};
    for (int i = 0; i < 6; ++i) header[i] = Byte();
    Put(&flat_, header, sizeof header);
    if (std::memcmp(header, "GIF87a", 6) == 0 || std::memcmp(header, "GIF89a", 6) == 0) {
      ReadScreen();
      while (ReadBlock()) {
      }
    } else {
      for (int field = 0; field < 9; ++field) Put(&flat_, 0);
    }
    Put(&flat_, stream_.position);
    return std::move(flat_);
  }

 private:
  uint8_t Byte() { return static_cast<uint8_t>(MyGetc(&stream_)); }
  int32_t Word() {
    const int32_t low = Byte();
    return low + 256 * Byte();
  }

  void ReadPalette(int32_t entries) {
    Put(&flat_, int64_t{entries} * 4);
    for (int32_t i = 0; i < entries * 4; ++i) flat_.push_back(i % 4 == 0 ? 0 : Byte());
  }

  void ReadScreen() {
    Put(&flat_, Word());
    Put(&flat_, Word());
    const int32_t packed = Byte();
    for (const int32_t field : {packed / 128, packed / 16 % 8 + 1, packed / 8 % 2, packed % 8 + 1})
      Put(&flat_, field);
    Put(&flat_, Byte());
    Put(&flat_, Byte());
    ReadPalette(packed / 128 ? 2 << packed % 8 : 0);
  }

  bool ReadBlock() {
    const int32_t introducer = Byte();
    if (introducer != '!' && introducer != ',') return false;
    Put(&flat_, introducer);
    if (introducer == '!') {
      ReadExtension();
    } else {
      ReadImage();
    }
    return true;
  }

  void ReadExtension() {
    Put(&flat_, Byte());
    while (const int32_t length = Byte()) {
      Put(&flat_, length);
      for (int32_t i = 0; i < length; ++i) flat_.push_back(Byte());
    }
    Put(&flat_, -1);
  }

  void LimitImage() {
    const auto at = static_cast<size_t>(stream_.position) + 4;
    const auto byte = [&](size_t i) { return at + i < file_->size() ? (*file_)[at + i] : 0; };
    const int64_t width = byte(0) + 256 * byte(1), height = byte(2) + 256 * byte(3);
    if (spent_ + (width + 8) * height <= limit_) {
      spent_ += (width + 8) * height;
      return;
    }
    static constexpr uint8_t kKept[] = {0x1F, 0, 0x0F, 0};
    for (size_t i = 0; i < 4 && at + i < file_->size(); ++i) (*file_)[at + i] &= kKept[i];
  }

  void ReadImage() {
    if (file_) LimitImage();
    Put(&flat_, Word());
    Put(&flat_, Word());
    const int32_t width = Word();
    const int32_t height = Word();
    const int32_t packed = Byte();
    const bool has_table = packed >= 128, interlaced = packed / 64 % 2;
    const int32_t depth = has_table ? packed % 8 + 1 : 0;
    for (const int32_t field :
         {width, height, int32_t{has_table}, int32_t{interlaced}, packed / 32 % 2, packed / 8 % 4, depth}) {
      Put(&flat_, field);
    }
    ReadPalette(has_table ? 1 << depth : 0);
    if (!file_) return ReadPixels(width, height);
    Byte();
    while (const int32_t length = Byte()) stream_.position += length;
  }

  void ReadPixels(int32_t width, int32_t height) {
    static oracle::GifDecoder decoder;
    const int32_t code_size = Byte();
    oracle::SetUp(&decoder, std::min(code_size, 11));
    if (code_size > 11) oracle::SkipRest(&stream_, &decoder);
    PutRowsByOracle(&flat_, &stream_, &decoder, width, height);
    oracle::SkipRest(&stream_, &decoder);
  }

  Bytes* file_ = nullptr;
  int64_t limit_ = 0;
  MyFILE stream_;
  Bytes flat_;
  int64_t spent_ = 0;
};

}  // namespace

Bytes Flatten(const Gif* gif) {
  Bytes flat;
  Put(&flat, gif->header, sizeof gif->header);
  Require(gif->header[6] == 0 && gif->header[7] == 0, "a header ends with NUL");
  const GifScreen& screen = *gif->screen;
  for (const int32_t field : {screen.width, screen.height, screen.has_cmap, screen.color_res, screen.sorted,
                              screen.cmap_depth, screen.bgcolour, screen.aspect}) {
    Put(&flat, field);
  }
  PutPalette(&flat, screen.cmap);
  Require((gif->count > 0) == (gif->blocks != nullptr), "a document's count goes with its blocks");
  for (int32_t i = 0; i < gif->count; ++i) {
    const GifBlock& block = *gif->blocks[i];
    Put(&flat, block.intro);
    if (block.picture) PutPicture(&flat, *block.picture);
    if (block.extension) PutExtension(&flat, *block.extension);
  }
  return flat;
}

Bytes FlattenByOracle(const Bytes& file) { return OracleReader(file).Read(); }

void LimitImages(Bytes* file, int64_t limit) { OracleReader(file, limit).Read(); }

Bytes FlattenByReader(const Bytes& file) {
  MyFILE stream = {file.data(), static_cast<int64_t>(file.size()), 0, nullptr};
  const int64_t before = HeapInUse();
  const Document gif(NewGif(), &DeleteGif);
  ReadGif(&stream, gif.get());
  constexpr int64_t kForEachByte = 16384, kForEachBlock = 1024;
  Require(HeapInUse() - before <= (stream.position + 1) * kForEachByte + (gif->count + 1) * kForEachBlock,
          "memory in proportion to what was read");
  Bytes flat = Flatten(gif.get());
  Put(&flat, stream.position);
  return flat;
}

void ExpectEqual(const char* what, const Bytes& actual, const Bytes& expected) {
  if (actual == expected) return;
  const auto shorter = std::min(actual.size(), expected.size());
  const auto at =
      std::mismatch(actual.begin(), actual.begin() + static_cast<std::ptrdiff_t>(shorter), expected.begin());
  std::fprintf(stderr, "%s: differ at byte %td; %zu bytes, expected %zu\n", what, at.first - actual.begin(),
               actual.size(), expected.size());
  std::abort();
}
