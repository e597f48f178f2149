#include "fuzz/flat_document.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "codec/reader.h"
#include "tests/oracle/slow_decoder.h"

namespace {

using Document = std::unique_ptr<Gif, decltype(&DeleteGif)>;

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

void PutPicture(Bytes* flat, const GifPicture& picture) {
  for (const int32_t field : {picture.left, picture.top, picture.width, picture.height, picture.has_cmap,
                              picture.interlace, picture.sorted, picture.reserved, picture.cmap_depth}) {
    Put(flat, field);
  }
  PutPalette(flat, picture.cmap);
  Require(picture.data || picture.height < 1, "an image that has a height has rows");
  for (int32_t row = 0; row < picture.height; ++row) {
    Require((picture.data[row] != nullptr) == (picture.width > 0), "a row that has a width has pixels");
    Put(flat, picture.data[row], picture.width);
  }
}

void PutExtension(Bytes* flat, const GifExtension& extension) {
  Put(flat, extension.marker);
  for (int32_t i = 0; i < extension.count; ++i) Put(flat, extension.data[i]->bytes, extension.data[i]->length);
  Put(flat, -1);
}

// Reads a file field by field as the format lays it out.
class OracleReader {
 public:
  OracleReader(Bytes* file, int64_t limit, bool decodes)
      : file_(file),
        limit_(limit),
        decodes_(decodes),
        stream_{file->data(), static_cast<int64_t>(file->size()), 0, nullptr} {}

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
    const auto at = static_cast<size_t>(stream_.position);
    if (at + 8 > file_->size()) return;
    uint8_t* size = file_->data() + at + 4;
    const int64_t width = size[0] + 256 * size[1], height = size[2] + 256 * size[3];
    if (spent_ + (width + 8) * height > limit_) {
      size[0] &= 0x1F;
      size[2] &= 0x0F;
      size[1] = size[3] = 0;
    } else {
      spent_ += (width + 8) * height;
    }
  }

  void ReadImage() {
    LimitImage();
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
    if (decodes_) return PutRows(ReadPixels(width, height), width, height, interlaced);
    Byte();
    while (const int32_t length = Byte()) stream_.position += length;
  }

  Bytes ReadPixels(int32_t width, int32_t height) {
    static oracle::GifDecoder decoder;
    const int32_t code_size = Byte();
    const bool decodes = code_size <= 11 && width > 0 && height > 0;
    oracle::SetUp(&decoder, decodes ? code_size : 0);
    const auto decoded = oracle::ReadImage(&stream_, &decoder, width, decodes ? height : 0);
    Bytes pixels(static_cast<size_t>(width) * static_cast<size_t>(height));
    std::copy(decoded.begin(), decoded.end(), pixels.begin());
    return pixels;
  }

  void PutRows(const Bytes& pixels, int32_t width, int32_t height, bool interlaced) {
    std::vector<int32_t> order;  // of the rows in the file
    if (interlaced) {
      for (int32_t y = 0; y < height; y += 8) order.push_back(y);
      for (int32_t y = 4; y < height; y += 8) order.push_back(y);
      for (int32_t y = 2; y < height; y += 4) order.push_back(y);
      for (int32_t y = 1; y < height; y += 2) order.push_back(y);
    } else {
      for (int32_t y = 0; y < height; ++y) order.push_back(y);
    }
    const auto row_size = sizeof(int64_t) + static_cast<size_t>(width);
    const size_t start = flat_.size();
    flat_.resize(start + row_size * static_cast<size_t>(height));
    for (size_t i = 0; i < order.size(); ++i) {
      const int64_t length = width;
      uint8_t* row = flat_.data() + start + row_size * static_cast<size_t>(order[i]);
      std::memcpy(row, &length, sizeof length);
      if (width > 0) std::memcpy(row + sizeof length, pixels.data() + i * static_cast<size_t>(width), length);
    }
  }

  Bytes* file_;
  int64_t limit_;
  bool decodes_;
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

int64_t RowLimit(int64_t usual) {
  static const char* const text = std::getenv("FUZZ_ROW_BYTES");
  return text ? std::strtoll(text, nullptr, 10) : usual;
}

Bytes FlattenByOracle(Bytes* file, int64_t limit) { return OracleReader(file, limit, true).Read(); }

void LimitImages(Bytes* file, int64_t limit) { OracleReader(file, limit, false).Read(); }

Bytes FlattenByReader(const Bytes& file) {
  MyFILE stream = {file.data(), static_cast<int64_t>(file.size()), 0, nullptr};
  const Document gif(NewGif(), &DeleteGif);
  ReadGif(&stream, gif.get());
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
