#include "codec/image_decoder.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "codec/building.h"
#include "codec/lzw_decoder.h"

// In sound data the strings of the codes stand in the image one after the other, across the ends of rows, and
// each table entry repeats what is there already: the previous string and the pixel that follows it. So an
// entry need only say where that place is and how long it is, and decoding is copying forward within the
// image. No links are followed and no stack turns strings round.
//
// Whatever ends a row early breaks this picture: a bad code, an end code, the end of the data, a code after
// the last entry. The state that the row decoder would have there is then built from the entries, and it
// takes over for the rest of the image.

namespace {

// A string in the image: its place in the upper half, then 16 bits each for the code that put it there and
// for its length in pixels. An entry for the string with one more pixel is the same plus 1. 0: no string.
using String = uint64_t;

String MakeString(uint64_t place, uint64_t code, uint64_t length) {
  return place << 32 | code << 16 | length;
}
uint64_t Place(String string) { return string >> 32; }
int32_t Code(String string) { return static_cast<int32_t>(string >> 16 & 0xFFFF); }
uint64_t Length(String string) { return string & 0xFFFF; }

uint64_t LoadLittleEndian(const uint8_t* bytes) {
  uint64_t value = 0;
  std::memcpy(&value, bytes, sizeof value);
  return std::endian::native == std::endian::big ? __builtin_bswap64(value) : value;
}

constexpr uint64_t kCopyStep = 16;

// The strings of single pixels lie behind the image, where the last copy cannot reach them.
constexpr uint64_t kSinglesAfter = kCopyStep;
static_assert(kPixelSpare >= kSinglesAfter + 256 + kCopyStep);

// Copies forward in steps of 16 bytes, up to 15 bytes too many. The target may begin 16 bytes or more into
// the source, or at the source's last byte.
void CopyForward(uint8_t* to, const uint8_t* from, uint64_t length) {
  uint64_t done = 0;
  do {
    uint8_t piece[kCopyStep];  // a register: source and target may overlap
    std::memcpy(piece, from + done, kCopyStep);
    std::memcpy(to + done, piece, kCopyStep);
    done += kCopyStep;
  } while (done < length);
  to[length - 1] = from[length - 1];
}

class ImageDecoder {
 public:
  ImageDecoder(MyFILE* stream, int32_t code_size, uint8_t* pixels, int32_t width, int32_t height)
      : stream_(stream),
        pixels_(pixels),
        width_(static_cast<uint64_t>(width)),
        total_(width_ * static_cast<uint64_t>(height)) {
    StartImage(&exact_, code_size);
    RestartCodes(&exact_);
    const uint64_t singles = total_ + kSinglesAfter;
    for (int32_t pixel = 0; pixel < std::min(exact_.clear_code, 256); ++pixel) {
      pixels_[singles + static_cast<uint64_t>(pixel)] = static_cast<uint8_t>(pixel);
    }
    for (int32_t code = 0; code < exact_.clear_code; ++code) {
      strings_[code] = MakeString(singles + (static_cast<uint64_t>(code) & 0xFF), 0, 1);
    }
    strings_[exact_.clear_code] = 0;
    strings_[exact_.end_code] = 0;
    next_ = exact_.end_code;
  }

  bool Decode() {
    while (done_ < total_) {
      DecodeBatches();
      if (done_ < total_ && !DecodeOne()) {
        HandOver();
        break;
      }
    }
    return exact_.data_ended;
  }

 private:
  void DecodeBatches();
  bool DecodeOne();
  bool FillBits();
  void CountCode();
  void Clear();
  void SaveRow();
  void HandOver();

  // The string of the i-th code since the table was cleared.
  String Sequence(int32_t i) const {
    const int32_t entry = exact_.end_code + 1 + i;
    return entry == next_ ? latest_ : strings_[entry] - 1;
  }
  int32_t SequenceLength() const { return next_ - exact_.end_code; }

  MyFILE* stream_;
  uint8_t* pixels_;
  uint64_t width_;
  uint64_t total_;           // pixels of the image
  uint64_t done_ = 0;        // pixels decoded
  uint64_t cleared_at_ = 0;  // `done_` when the table was cleared
  String latest_ = 0;        // the previous code's string
  int32_t next_;             // the entry that the next code defines; `end_code` stands for none
  // Bits and widths of the codes. The fields of the row decoder's own (`last_code`, `stack_depth`, `stack`)
  // are kept only as of the last clear code; `code_count`, `suffix` and `prefix` are unused until it takes
  // over.
  GifDecoder exact_;
  String strings_[kTableSize];
};

// Many codes of one width from one load of bits. Stops before a code that is not plainly sound, near the end
// of the bytes at hand, and where the width is about to change.
void ImageDecoder::DecodeBatches() {
  if (next_ == exact_.end_code) return;
  const int32_t width = exact_.code_width;
  const uint64_t mask = (uint64_t{1} << width) - 1;
  const int32_t codes_per_load = 56 / width;
  uint64_t buffer = exact_.bit_buffer;
  int32_t bits = exact_.bit_count;
  const uint8_t* in = exact_.block + exact_.block_pos;
  const uint8_t* const in_end = exact_.block + exact_.block_len;
  const int64_t last_next = exact_.width_limit - 1 - codes_per_load;
  int64_t next = next_;
  uint64_t done = done_;
  String latest = latest_;
  bool sound = true;
  while (sound && next <= last_next && in_end - in >= 8) {
    buffer |= LoadLittleEndian(in) << bits;
    in += (63 - bits) >> 3;
    bits |= 56;
    for (int32_t i = 0; i < codes_per_load; ++i) {
      const auto code = static_cast<int64_t>(buffer & mask);
      strings_[next] = latest + 1;
      const String string = strings_[code];
      const uint64_t length = Length(string);
      if (code > next || string == 0 || done + length > total_) {
        sound = false;
        break;
      }
      CopyForward(pixels_ + done, pixels_ + Place(string), length);
      latest = MakeString(done, static_cast<uint64_t>(code), length);
      done += length;
      ++next;
      buffer >>= width;
      bits -= width;
    }
  }
  exact_.bit_buffer = buffer & ((uint64_t{1} << bits) - 1);
  exact_.bit_count = bits;
  exact_.block_pos = static_cast<int32_t>(in - exact_.block);
  next_ = static_cast<int32_t>(next);
  done_ = done;
  latest_ = latest;
}

// Holds enough bits for a code. False at the end of the data.
bool ImageDecoder::FillBits() {
  while (exact_.bit_count < exact_.code_width) {
    if (exact_.block_pos == exact_.block_len && !GatherSubBlocks(stream_, &exact_)) return false;
    exact_.bit_buffer |= uint64_t{exact_.block[exact_.block_pos++]} << exact_.bit_count;
    exact_.bit_count += 8;
  }
  return true;
}

// One code, whatever it is. False, with nothing taken, when the row decoder must see to it.
bool ImageDecoder::DecodeOne() {
  if (!FillBits()) return false;
  const auto code = static_cast<int32_t>(exact_.bit_buffer & ((uint64_t{1} << exact_.code_width) - 1));
  const int32_t width = exact_.code_width;
  if (code == exact_.clear_code) {
    Clear();
  } else if (next_ == exact_.end_code) {
    if (code > exact_.clear_code) return false;
    pixels_[done_] = static_cast<uint8_t>(code);
    latest_ = MakeString(done_++, static_cast<uint64_t>(code), 1);
    CountCode();
  } else {
    if (code > next_ || code == exact_.end_code || next_ == kTableSize) return false;
    strings_[next_] = latest_ + 1;
    const String string = strings_[code];
    const uint64_t length = Length(string);
    const uint64_t fitting = std::min(length, total_ - done_);
    CopyForward(pixels_ + done_, pixels_ + Place(string), fitting);
    latest_ = MakeString(done_, static_cast<uint64_t>(code), length);
    done_ += fitting;
    CountCode();
  }
  exact_.bit_buffer >>= width;
  exact_.bit_count -= width;
  return true;
}

// The code just read has defined its entry.
void ImageDecoder::CountCode() {
  if (++next_ < exact_.width_limit || exact_.code_width == kMaxCodeWidth) return;
  exact_.width_limit *= 2;
  exact_.code_width++;
}

void ImageDecoder::Clear() {
  SaveRow();
  RestartCodes(&exact_);
  next_ = exact_.end_code;
  cleared_at_ = done_;
}

// Gives `exact_` the fields that the row decoder has in the middle of the present row: `last_code`,
// `stack_depth` and as much of `stack` as that depth can bring back.
void ImageDecoder::SaveRow() {
  const uint64_t row = done_ - done_ % width_;
  int32_t first = 0;  // the first code that counts in this row's call, or put pixels into it
  if (row > cleared_at_) {
    first = SequenceLength() - 1;
    while (Place(Sequence(first)) >= row) --first;
    const String across = Sequence(first);
    exact_.last_code = Code(across);
    exact_.stack_depth = static_cast<int32_t>(Place(across) + Length(across) - row);
  }
  // Each table code's string was pushed onto the empty stack, over those before it.
  uint64_t filled = 0;
  for (int32_t i = SequenceLength() - 1; i >= first; --i) {
    const String string = Sequence(i);
    if (Code(string) < exact_.clear_code) continue;
    const uint64_t last = Place(string) + Length(string) - 1;
    const uint64_t end = std::min(Length(string), static_cast<uint64_t>(exact_.stack_depth));
    for (; filled < end; ++filled) exact_.stack[filled] = pixels_[last - filled];
  }
}

// Lets the row decoder finish the image from here.
void ImageDecoder::HandOver() {
  SaveRow();
  ForgetEntries(&exact_);
  for (int32_t entry = exact_.end_code + 1; entry < next_; ++entry) {
    const String string = strings_[entry];
    exact_.prefix[entry] = Code(string);
    exact_.suffix[entry] = pixels_[Place(string) + Length(string) - 1];
  }
  exact_.code_count = next_ + 1;
  std::fill_n(pixels_ + done_, std::min(kCopyStep, total_ - done_), uint8_t{0});

  const auto width = static_cast<int32_t>(width_);
  const uint64_t column = done_ % width_;
  uint8_t* line = pixels_ + (done_ - column);
  const int32_t last_code = next_ == exact_.end_code ? kNoCode : Code(latest_);
  ContinueGifLine(stream_, &exact_, line, width, static_cast<int32_t>(column), last_code);
  while ((line += width) < pixels_ + total_ && !OnlyZerosFollow(&exact_)) {
    ReadGifLine(stream_, &exact_, line, width);
  }
}

}  // namespace

bool DecodeImage(MyFILE* stream, int32_t code_size, uint8_t* pixels, int32_t width, int32_t height) {
  return ImageDecoder(stream, code_size, pixels, width, height).Decode();
}
