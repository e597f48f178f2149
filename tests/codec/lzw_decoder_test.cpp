#include "codec/lzw_decoder.h"

#include <gtest/gtest.h>
#if __has_include(<malloc.h>)
#include <malloc.h>
#endif

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "codec/document.h"
#include "codec/picture_rows.h"
#include "codec/reader.h"
#include "codec/tolerance.h"
#include "tests/oracle/slow_decoder.h"
#include "tests/support/code_streams.h"

namespace {

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
    RowReader rows(picture);
    for (int32_t i = 0; i < picture->height; ++i) {
      const uint8_t* row = rows.Row(DisplayRow(picture->height, picture->interlace, i));
      image.pixels.insert(image.pixels.end(), row, row + picture->width);
    }
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

// As many as the environment asks for, from a seed of their own; else `usual`.
int Wanted(int usual) {
  const char* wanted = std::getenv("LZW_STREAMS");
  return wanted ? std::atoi(wanted) : usual;
}

// Gives what the judge has met.
std::array<int64_t, oracle::kEventCount> ExpectAgreement(int streams, int32_t most_pixels) {
  StreamMaker maker(20240229 + static_cast<uint32_t>(Wanted(0)));
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
  const int streams = Wanted(100000);
  const auto met = ExpectAgreement(streams, 0);
  EXPECT_GT(*std::min_element(met.begin(), met.end()), streams / 500) << testing::PrintToString(met);
}

// What the data do not reach is zeros, whatever the copies before it wrote: into memory that was zeros before they
// ran over, and into memory that was not.
TEST(LzwDecoder, AgreesWithTheOracleOnLargeImages) {
#if defined(M_PERTURB)
  mallopt(M_PERTURB, 0x55);
#endif
  const int kStreams = kTolerant ? 200 : 1500;  // zeros beyond the data are slow to judge with a full table
  const auto met = ExpectAgreement(kStreams, 1 << 24);
  for (const auto end : {oracle::kEndEarly, oracle::kUndefinedCode, oracle::kEndOneShort, oracle::kDataEnded}) {
    EXPECT_GT(met[end], kStreams / 15) << "event " << end;
  }
}

}  // namespace
