#include "scan/scanner.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "codec/format.h"
#include "scan/code_walk.h"

namespace {

constexpr int64_t kHeaderBytes = 6, kScreenBytes = 7, kDescriptorBytes = 9;
constexpr int32_t kLargestCodeSize = 8;  // that GIF89a knows

// Labels (GIF89a, sections 23 to 26).
constexpr int32_t kPlainText = 0x01, kGraphicControl = 0xF9, kApplication = 0xFF;
constexpr int64_t kPlainTextBytes = 12, kGraphicControlBytes = 4, kApplicationBytes = 11;

class Scanner {
 public:
  explicit Scanner(std::span<const uint8_t> bytes) : bytes_(bytes), size_(static_cast<int64_t>(bytes.size())) {
    scan_.size = size_;
    scan_.trailer = -1;
  }
  FileScan Scan();

 private:
  struct ColourTable {
    Extent extent;
    int32_t depth;  // 0: no table
  };

  // Past the end there are zeros, as when a document is read.
  int32_t ByteAt(int64_t offset) const { return offset < size_ ? bytes_[static_cast<size_t>(offset)] : 0; }
  int32_t WordAt(int64_t offset) const { return ByteAt(offset) | ByteAt(offset + 1) << 8; }

  // The next bytes, as many of them as there are.
  Extent Take(int64_t length) {
    const Extent taken{at_, std::min(length, size_ - at_)};
    at_ += taken.length;
    cut_ = cut_ || taken.length < length;
    return taken;
  }

  void Find(FindingKind kind, int64_t offset, int64_t amount = 0) {
    scan_.findings.push_back({kind, block_, offset, amount});
  }

  ColourTable TakeTable(int32_t packed);
  void ScanExtension();
  void ScanImage();
  CodeWalk WalkData(ImageScan* image);
  void JudgeWalk(const ImageScan& image, const CodeWalk& walk);
  void JudgeTables(const ImageScan& image, const ColourTable& own, int32_t highest);
  void JudgeExtension(int32_t label, int64_t first);
  template <typename Use>
  Extent TakeSubBlocks(Use use);
  int64_t OffsetOf(const ImageScan& image, int64_t bit) const;
  void ScanEnd();

  std::span<const uint8_t> bytes_;
  int64_t size_;
  int64_t at_ = 0;
  int32_t block_ = -1;  // being scanned
  bool cut_ = false;    // something was wanted beyond the end
  ColourTable global_{};
  int64_t transparent_at_ = -1;  // offset of the index that the next image takes for transparent; -1: none
  FileScan scan_{};
};

Scanner::ColourTable Scanner::TakeTable(int32_t packed) {
  if ((packed & 0x80) == 0) return {{at_, 0}, 0};
  const int32_t depth = (packed & 7) + 1;
  return {Take(int64_t{3} << depth), depth};
}

// Steps over the sub-blocks up to and with the empty one. Each is put to use with what is there of it.
template <typename Use>
Extent Scanner::TakeSubBlocks(Use use) {
  const int64_t first = at_;
  while (true) {
    const Extent length = Take(1);
    const int32_t bytes = ByteAt(length.offset);
    if (length.length == 0 || bytes == 0) return {first, at_ - first};
    const Extent content = Take(bytes);
    use(bytes_.data() + content.offset, content.length);
  }
}

// --- Extensions ----------------------------------------------------------------------------------------------------

// The sub-blocks begin at `first`. Those of comments and of extensions that no one knows may be any.
void Scanner::JudgeExtension(int32_t label, int64_t first) {
  const int64_t length = ByteAt(first), second = first + 1 + length, second_length = ByteAt(second);
  const bool only_one = length == 0 || second_length == 0;
  if (label == kGraphicControl && (length != kGraphicControlBytes || !only_one)) {
    Find(FindingKind::kOddSubBlocks, first, length);
  } else if (label == kPlainText && length != kPlainTextBytes) {
    Find(FindingKind::kOddSubBlocks, first, length);
  } else if (label == kApplication && length != kApplicationBytes) {
    Find(FindingKind::kOddSubBlocks, first, length);
  } else if (label == kApplication) {
    const std::string_view name(reinterpret_cast<const char*>(bytes_.data() + first + 1), kApplicationBytes);
    const bool loops = name == "NETSCAPE2.0" || name == "ANIMEXTS1.0";
    // The loop count comes first: a 1 and a word. Players look nowhere else.
    if (loops && (second_length != 3 || ByteAt(second + 1) != 1))
      Find(FindingKind::kOddSubBlocks, second, second_length);
  }
}

void Scanner::ScanExtension() {
  const Extent label_at = Take(1);
  const int32_t label = ByteAt(label_at.offset);
  scan_.blocks.push_back({label_at.offset - 1, 0, label, -1});
  const int64_t first = at_;
  TakeSubBlocks([](const uint8_t*, int64_t) {});
  if (!cut_) JudgeExtension(label, first);
  if (label == kGraphicControl && ByteAt(first) >= kGraphicControlBytes) {
    transparent_at_ = (ByteAt(first + 1) & 1) != 0 ? first + kGraphicControlBytes : -1;
  }
}

// --- Images --------------------------------------------------------------------------------------------------------

// Where the byte of an image's data stands that holds a bit; behind the last one where the empty sub-block is.
int64_t Scanner::OffsetOf(const ImageScan& image, int64_t bit) const {
  int64_t left = std::min(bit / 8, image.compressed_bytes), at = image.data.offset;
  for (int32_t length = ByteAt(at); length > 0 && left >= length; length = ByteAt(at)) {
    left -= length;
    at += 1 + length;
  }
  return std::min(ByteAt(at) == 0 ? at : at + 1 + left, size_);
}

void Scanner::JudgeWalk(const ImageScan& image, const CodeWalk& walk) {
  const int64_t area = int64_t{image.width} * image.height, missing = area - walk.pixels;
  if (walk.full_at >= 0) Find(FindingKind::kFullTable, OffsetOf(image, walk.full_at), area - walk.full_pixels);
  if (walk.over_at >= 0 && area > 0) Find(FindingKind::kTooManyPixels, OffsetOf(image, walk.over_at), -missing);
  if (missing <= 0) return;
  const int64_t offset = OffsetOf(image, walk.ended_at);
  // Behind the end code bits of its last byte may be left, and a byte by those who count them otherwise.
  const bool goes_on = image.compressed_bytes > walk.ended_at / 8 + 3;
  if (walk.end == WalkEnd::kUndefinedCode) {
    Find(FindingKind::kUndefinedCode, offset, missing);
  } else if (walk.end == WalkEnd::kEndCode && goes_on) {
    Find(FindingKind::kEndCode, offset, missing);
  } else {
    Find(FindingKind::kTooFewPixels, offset, missing);
  }
}

// `highest` is the highest index of the image's pixels.
void Scanner::JudgeTables(const ImageScan& image, const ColourTable& own, int32_t highest) {
  const ColourTable& used = own.depth > 0 ? own : global_;
  const int64_t code_size_at = image.data.offset - 1;
  if (used.depth > 0) {
    const int32_t colours = 1 << used.depth;
    if (highest >= colours) Find(FindingKind::kIndexBeyondTable, image.data.offset, highest);
    if (transparent_at_ >= 0 && ByteAt(transparent_at_) >= colours) {
      Find(FindingKind::kTransparentBeyondTable, transparent_at_, ByteAt(transparent_at_));
    }
    if (image.code_size != std::max(used.depth, 2)) Find(FindingKind::kCodeSize, code_size_at, image.code_size);
  } else if (image.code_size < 2 || image.code_size > kLargestCodeSize) {
    Find(FindingKind::kCodeSize, code_size_at, image.code_size);
  }
  const int64_t needed = int64_t{3} * (highest + 1);
  if (own.depth > 0 && highest >= 0 && needed <= std::min(own.extent.length, global_.extent.length) &&
      std::memcmp(&bytes_[own.extent.offset], &bytes_[global_.extent.offset], needed) == 0) {
    Find(FindingKind::kTableNotNeeded, own.extent.offset, own.extent.length);
  }
}

// Data of a minimum code size that leaves no room for codes is not looked at, nor is it when a document is read.
CodeWalk Scanner::WalkData(ImageScan* image) {
  CodeWalker walker(std::clamp(image->code_size, 0, kMaxMinimumCodeSize), int64_t{image->width} * image->height);
  const bool decoded = image->code_size >= 0 && image->code_size <= kMaxMinimumCodeSize;
  image->data = TakeSubBlocks([&](const uint8_t* bytes, int64_t count) {
    image->sub_blocks++;
    image->compressed_bytes += count;
    if (decoded) walker.Add(bytes, count);
  });
  const CodeWalk walk = walker.Finish();
  image->codes = walk.codes;
  image->clear_codes = walk.clear_codes;
  image->pixels = walk.pixels;
  return walk;
}

void Scanner::ScanImage() {
  scan_.blocks.push_back({at_ - 1, 0, -1, static_cast<int32_t>(scan_.images.size())});
  ImageScan image{};
  const int64_t descriptor = Take(kDescriptorBytes).offset;
  image.width = WordAt(descriptor + 4);
  image.height = WordAt(descriptor + 6);
  const ColourTable own = TakeTable(ByteAt(descriptor + 8));
  image.table = own.extent;
  const Extent code_size = Take(1);
  image.code_size = code_size.length > 0 ? ByteAt(code_size.offset) : -1;
  const CodeWalk walk = WalkData(&image);
  if (image.code_size >= 0) {
    JudgeTables(image, own, walk.highest);
    JudgeWalk(image, walk);
  }
  transparent_at_ = -1;
  scan_.images.push_back(image);
}

// --- The file ------------------------------------------------------------------------------------------------------

// Where no block begins.
void Scanner::ScanEnd() {
  block_ = -1;
  if (cut_) {
    block_ = static_cast<int32_t>(scan_.blocks.size()) - 1;
    Find(FindingKind::kCutShort, size_);
  } else if (at_ == size_) {
    Find(FindingKind::kNoTrailer, size_);
  } else if (ByteAt(at_) != kTrailer) {
    Find(FindingKind::kStrayByte, at_, size_ - at_);
  } else {
    scan_.trailer = at_++;
    if (at_ < size_) Find(FindingKind::kAfterTrailer, at_, size_ - at_);
  }
}

FileScan Scanner::Scan() {
  const Extent header = Take(kHeaderBytes);
  const char* version = reinterpret_cast<const char*>(bytes_.data());
  if (cut_ || (std::memcmp(version, "GIF87a", 6) != 0 && std::memcmp(version, "GIF89a", 6) != 0)) {
    Find(FindingKind::kNotAGif, header.offset);
    return std::move(scan_);
  }
  scan_.screen = Take(kScreenBytes);
  global_ = TakeTable(ByteAt(scan_.screen.offset + 4));
  scan_.table = global_.extent;
  while (!cut_) {
    const int32_t introducer = ByteAt(at_);
    if (introducer != kExtensionIntroducer && introducer != kImageIntroducer) break;
    block_ = static_cast<int32_t>(scan_.blocks.size());
    at_++;
    introducer == kImageIntroducer ? ScanImage() : ScanExtension();
    BlockScan& block = scan_.blocks.back();
    block.length = at_ - block.offset;
  }
  ScanEnd();
  return std::move(scan_);
}

}  // namespace

FileScan ScanFile(std::span<const uint8_t> bytes) { return Scanner(bytes).Scan(); }
