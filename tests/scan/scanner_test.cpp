#include "scan/scanner.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <sstream>
#include <string>

#include "codec/document.h"
#include "codec/format.h"
#include "codec/reader.h"
#include "tests/support/code_streams.h"

namespace {

using Text = std::string;

// Pieces of small files, as they stand there.
const Text kHeader = "GIF89a";
const Text kScreen4 = {"\x2\0\x2\0\x81\0\0", 7};  // 2 x 2, a table of 4 colours
const Text kTable4 = "RGBrgbRgBrGb";
const Text kControl = {"!\xF9\x4\x1\0\0\x3\0", 8};  // the transparent index is 3
const Text kDescriptor = {",\0\0\0\0\x2\0\x2\0\0", 10};
const Text kOwnTable = {",\0\0\0\0\x2\0\x2\0\x81", 10};
const Text kPixels = {"\x2\x2\x84\x53\0", 5};  // clear, 0, 6: the pixels 0, 0, 0; 1, end
const Text kLoops = {"!\xFF\xBNETSCAPE2.0\x3\x1\0\0\0", 19};
const Text kEnd = ";";

std::string Describe(const FileScan& scan) {
  std::ostringstream text;
  for (const Finding& finding : scan.findings) {
    const FindingMeaning& meaning = MeaningOf(finding.kind);
    text << (text.tellp() > 0 ? ", " : "") << meaning.name << ' ' << finding.block << " @" << finding.offset;
    if (meaning.amount) text << ' ' << finding.amount;
  }
  return text.str();
}

FileScan Scan(const Text& bytes) { return ScanFile({reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()}); }

TEST(Scanner, FindsWhatIsWrongOrOdd) {
  const Text start = kHeader + kScreen4 + kTable4, image = kDescriptor + kPixels;  // of 25 and 15 bytes
  const auto with_data = [&](const char* data, size_t size) { return start + kDescriptor + Text(data, size) + kEnd; };
  const struct {
    const char* name;
    Text file;
    const char* findings;
  } cases[] = {
      {"sound", start + kLoops + kControl + image + kEnd, ""},
      {"empty", "", "not_a_gif -1 @0"},
      {"another version", "GIF90a" + start.substr(6) + kEnd, "not_a_gif -1 @0"},
      {"in the table", start.substr(0, 20), "cut_short -1 @20"},
      {"in an extension's label", start + "!", "cut_short 0 @26"},
      {"in a sub-block",
       start + "!\xFE\x5"
               "abc",
       "cut_short 0 @31"},
      {"in a descriptor", start + kDescriptor.substr(0, 8), "cut_short 0 @33"},
      {"in the data", start + image.substr(0, 13), "too_few_pixels 0 @37 3, cut_short 0 @38"},
      {"before the empty sub-block", start + image.substr(0, 14), "cut_short 0 @39"},
      {"after the image", start + image, "no_trailer -1 @40"},
      {"stray", start + image + "xyz", "stray_byte -1 @40 3"},
      {"bytes behind", start + image + kEnd + "xyz", "after_trailer -1 @41 3"},
      {"undefined code", with_data("\x2\x2\xC4\x55", 5), "undefined_code 0 @37 3"},
      {"end code with data to come", with_data("\x2\x7\x44\x13\x11\x11\x11\x42\0", 10), "end_code 0 @37 3"},
      {"too few", with_data("\x2\x2\x84\x0B", 5), "too_few_pixels 0 @38 1"},
      {"no data", with_data("\x2", 2), "too_few_pixels 0 @36 4"},
      {"too many", with_data("\x2\x3\x84\x13\x05", 6), "too_many_pixels 0 @38 1"},
      {"no such code size", with_data("\xC\x1z", 4), "code_size 0 @35 12, too_few_pixels 0 @37 4"},
      {"another code size", with_data("\x3\x3\x08\x1A\x09", 6), "code_size 0 @35 3"},
      {"the same table", start + kOwnTable + kTable4 + kPixels + kEnd, "table_not_needed 0 @35 12"},
      {"the same up to the last colour used", start + kOwnTable + "RGBrgb......" + kPixels + kEnd,
       "table_not_needed 0 @35 12"},
      {"another table", start + kOwnTable + "RGBrg......." + kPixels + kEnd, ""},
      {"index and transparent index beyond",
       kHeader + Text("\x2\0\x2\0\x80\0\0", 7) + "RGBrgb" + kControl + kDescriptor + Text("\x2\x2\x84\x57\0", 5) +
           kEnd,
       "index_beyond_table 1 @38 3, transparent_beyond_table 1 @25 3"},
      {"a graphic control too long", start + Text("!\xF9\x5\0\0\0\0\0\0", 9) + kEnd, "odd_sub_blocks 0 @27 5"},
      {"a graphic control in two", start + Text("!\xF9\x4\0\0\0\0\x1x\0", 10) + kEnd, "odd_sub_blocks 0 @27 4"},
      {"a plain text without its grid",
       start +
           Text("!\x1\x3"
                "abc\0",
                7) +
           kEnd,
       "odd_sub_blocks 0 @27 3"},
      {"a short name",
       start +
           Text("!\xFF\x3"
                "abc\0",
                7) +
           kEnd,
       "odd_sub_blocks 0 @27 3"},
      {"no count first", start + Text("!\xFF\xBNETSCAPE2.0\x5\x2\0\0\0\0\x3\x1\0\0\0", 25) + kEnd,
       "odd_sub_blocks 0 @39 5"},
      {"another application", start + Text("!\xFF\xBNETSCAPE3.0\x5\x2\0\0\0\0\0", 21) + kEnd, ""},
  };
  for (const auto& c : cases) EXPECT_EQ(Describe(Scan(c.file)), c.findings) << c.name;
}

// A full table and its end, from the many codes of one pixel.
TEST(Scanner, TellsWhereAFullTableIsUsed) {
  Bytes file = FileBefore(5000, 1, 8);
  const auto start = static_cast<int64_t>(file.size());
  CodePacker packer(8);
  for (int i = 0; i < 5000; ++i) packer.Add(7);
  const Bytes data = packer.Finish();
  for (const uint8_t byte : data) file.insert(file.end(), {1, byte});
  file.insert(file.end(), {0, kTrailer});
  const FileScan scan = ScanFile(file);
  // 3,839 codes fill the table: 254 of 9 bits, 512 of 10, 1024 of 11, the rest of 12; each byte is a sub-block.
  const int64_t bit = 255 * 9 + 512 * 10 + 1024 * 11 + (3839 - 255 - 512 - 1024) * 12;
  EXPECT_EQ(Describe(scan),
            "full_table 0 @" + std::to_string(start + bit / 8 * 2 + 1) + " " + std::to_string(5000 - 3839));
  EXPECT_EQ(scan.images.at(0).pixels, 5000);
  EXPECT_EQ(scan.images.at(0).codes, 5000);
  EXPECT_EQ(scan.images.at(0).sub_blocks, static_cast<int64_t>(data.size()));
}

Bytes Load(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// Every block of a document has its scan, and they stand one behind the other, whatever has become of the file.
void ExpectBlocksAsRead(const Bytes& file) {
  const FileScan scan = ScanFile(file);
  MyFILE stream{file.data(), static_cast<int64_t>(file.size()), 0, nullptr};
  Gif* gif = NewGif();
  ReadGif(&stream, gif);
  ASSERT_EQ(static_cast<int32_t>(scan.blocks.size()), gif->count);
  int64_t at = scan.table.offset + scan.table.length;
  for (int32_t i = 0; i < gif->count; ++i) {
    const BlockScan& block = scan.blocks[static_cast<size_t>(i)];
    ASSERT_EQ(block.offset, at);
    ASSERT_EQ(file[static_cast<size_t>(at)], gif->blocks[i]->intro);
    ASSERT_EQ(block.image >= 0, gif->blocks[i]->extension == nullptr);
    if (const GifExtension* extension = gif->blocks[i]->extension) {
      ASSERT_EQ(block.label, extension->marker);
    }
    at += block.length;
  }
  for (const Finding& finding : scan.findings) {
    ASSERT_GE(finding.offset, 0);
    ASSERT_LE(finding.offset, scan.size);
    ASSERT_LT(finding.block, gif->count);
  }
  DeleteGif(gif);
}

TEST(Scanner, WalksTheBlocksThatAreRead) {
  std::mt19937 random(7);
  const auto below = [&](size_t end) { return std::uniform_int_distribution<size_t>(0, end - 1)(random); };
  int files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(GIF_SAMPLES)) {
    const Bytes file = Load(entry.path());
    ExpectBlocksAsRead(file);
    for (int i = 0; i < 300; ++i, ++files) {
      Bytes damaged = file;
      for (size_t changes = below(4); changes > 0; --changes)
        damaged[below(file.size())] = static_cast<uint8_t>(below(256));
      if (i % 3 == 0) damaged.resize(below(file.size()));
      SCOPED_TRACE(i);
      ExpectBlocksAsRead(damaged);
      if (HasFatalFailure()) return;
    }
  }
  EXPECT_GT(files, 0);
}

}  // namespace
