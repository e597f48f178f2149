#include "codec/lzw_decoder.h"

#include <gtest/gtest.h>
#if __has_include(<malloc.h>)
#include <malloc.h>
#endif

#include <algorithm>
#include <array>
#include <random>
#include <string>
#include <vector>

#include "codec/document.h"
#include "codec/reader.h"
#include "tests/oracle/slow_decoder.h"

namespace {

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
Bytes FileBefore(int32_t width, int32_t height, int32_t code_size) {
  const std::string start = {"GIF87a\x9\0\x9\0\0\0\0,\0\0\0\0", 18};  // a screen without a table
  Bytes file(start.begin(), start.end());
  for (const int32_t byte : {width, width >> 8, height, height >> 8, 0 /*packed*/, code_size}) {
    file.push_back(static_cast<uint8_t>(byte));
  }
  return file;
}

struct Image {
  Bytes pixels;
  int64_t position;  // of the stream after the image's data
};

Image ByOracle(const Bytes& file, size_t data, int32_t width, int32_t height, oracle::GifDecoder* decoder) {
  MyFILE stream{file.data(), static_cast<int64_t>(file.size()), static_cast<int64_t>(data), nullptr};
  oracle::SetUp(decoder, file[data - 1]);
  Bytes pixels = oracle::ReadImage(&stream, decoder, width, height);
  return {std::move(pixels), stream.position};
}

// The whole file by the reader; a trailer must follow the data.
Image ByReader(const Bytes& file) {
  MyFILE stream{file.data(), static_cast<int64_t>(file.size()), 0, nullptr};
  Gif* gif = NewGif();
  ReadGif(&stream, gif);
  Image image{{}, stream.position};
  if (gif->count == 1 && gif->blocks[0]->picture) {
    const GifPicture* picture = gif->blocks[0]->picture;
    image.pixels.assign(picture->pixels, picture->pixels + static_cast<size_t>(picture->width) * picture->height);
  }
  DeleteGif(gif);
  return image;
}

// Codes written out, and the rows that they must give: they judge the oracle, which judges the rest.
TEST(LzwDecoder, GivesTheRowsOfKnownStreams) {
  constexpr int32_t kClear = 256, kEnd = 257;  // with a minimum code size of 8
  struct Case {
    const char* name;
    int32_t code_size, width;
    std::vector<int32_t> codes;
    Bytes pixels;
  };
  const Case cases[] = {
      {"a code for the entry that it defines", 8, 3, {kClear, 0, 258, kEnd}, {0, 0, 0}},
      {"an undefined code ends the row, not the image", 8, 2, {kClear, 5, 300, 6, 7}, {5, 0, 6, 7}},
      {"a row that fails gets its string again", 8, 2, {kClear, 1, 258, 400, 5}, {1, 1, 1, 0, 1, 5}},
      {"one pixel short is a full row", 8, 3, {kClear, 1, 2, kEnd, 260, 258}, {1, 2, 0, 2, 2, 1}},
      {"two pixels short is an error", 8, 3, {kClear, 1, kEnd, 259, 7, 8, 9}, {1, 0, 0, 0, 0, 0, 7, 8, 9}},
      {"an undefined entry after an error", 8, 2, {1, 300, 2, 3, 259, 4}, {1, 0, 2, 3, 0, 0, 4, 0}},
      {"pixels are the low byte of wide codes", 11, 2, {0x7FF, 0x100, 0x301, kEnd}, {0xFF, 0, 1, 1}},
      {"code size 0 knows one pixel value", 0, 3, {1, 0, 3, 0, 2}, {0, 0, 0, 0, 0, 0}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    CodePacker packer(c.code_size);
    for (const int32_t code : c.codes) packer.Add(code);
    const Bytes data = packer.Finish();
    const auto height = static_cast<int32_t>(c.pixels.size()) / c.width;
    Bytes file = FileBefore(c.width, height, c.code_size);
    const size_t start = file.size();
    for (const uint8_t byte : data) file.insert(file.end(), {1, byte});  // each byte is a sub-block
    file.insert(file.end(), {0, 0x3B});

    static oracle::GifDecoder judge;
    EXPECT_EQ(ByOracle(file, start, c.width, height, &judge).pixels, c.pixels);
    EXPECT_EQ(ByReader(file).pixels, c.pixels);
  }
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

// Gives what the judge has met.
std::array<int64_t, oracle::kEventCount> ExpectAgreement(int streams, int32_t most_pixels) {
  StreamMaker maker(20240229);
  static oracle::GifDecoder judge;
  judge.events = {};
  for (int i = 0; i < streams; ++i) {
    const StreamMaker::Made made = maker.Make(most_pixels);
    const Image expected = ByOracle(made.file, made.data, made.width, made.height, &judge);
    const Image read = ByReader(made.file);
    EXPECT_TRUE(read.pixels == expected.pixels) << i;  // too many to print
    EXPECT_EQ(read.position, std::min(expected.position + 1, static_cast<int64_t>(made.file.size()))) << i;
    if (testing::Test::HasFailure()) break;
  }
  return judge.events;
}

TEST(LzwDecoder, AgreesWithTheOracleOnRandomAndDamagedStreams) {
  constexpr int kStreams = 100000;
  const auto met = ExpectAgreement(kStreams, 0);
  EXPECT_GT(*std::min_element(met.begin(), met.end()), kStreams / 500) << testing::PrintToString(met);
}

// What the data do not reach is zeros, whatever the copies before it wrote: into memory that was zeros before they
// ran over, and into memory that was not.
TEST(LzwDecoder, AgreesWithTheOracleOnLargeImages) {
#if defined(M_PERTURB)
  mallopt(M_PERTURB, 0x55);
#endif
  constexpr int kStreams = kUsesFullTable ? 200 : 1500;  // zeros beyond the data are slow to judge with a full table
  const auto met = ExpectAgreement(kStreams, 1 << 24);
  for (const auto end : {oracle::kEndEarly, oracle::kUndefinedCode, oracle::kEndOneShort, oracle::kDataEnded}) {
    EXPECT_GT(met[end], kStreams / 15) << "event " << end;
  }
}

}  // namespace
