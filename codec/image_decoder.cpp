#include "codec/image_decoder.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <numeric>

#include "codec/lzw_decoder.h"
#include "codec/memory.h"
#include "codec/picture_rows.h"
#include "platform/compiler.h"
#include "platform/pages.h"

// In sound data the strings of the codes stand in the image one after the other, across the ends of rows, and
// a table entry repeats what is there already: the previous string and the pixel that follows it. So an entry
// need only say where that place is and how long, and decoding is copying forward within the image. No links
// are followed, and no stack turns strings round.
//
// Whatever ends a row early breaks this picture: a bad code, an end code, the end of the data, a code after
// the last entry. The state that the row decoder would have there is then built from the entries, and it
// takes over for the rest of the image.

namespace {

// Copies run over: by 15 bytes after a short string, by 31 after a long one. They read as far.
constexpr uint64_t kStep = 16, kLongStep = 32;

// Of at least 56 bits in a load of eight bytes, four codes have at most 48.
constexpr int32_t kBatch = 4;

// Bytes behind the last pixel that there is room for: the short strings of one batch are not asked whether they fit.
constexpr uint64_t kSpare = kBatch * kStep + kLongStep;

// The strings of single pixels lie before the image: places are counted from the first of them.
constexpr uint64_t kFirstPixel = 256;

constexpr auto kSingles = [] {
  std::array<uint8_t, 256> pixels{};
  std::iota(pixels.begin(), pixels.end(), uint8_t{0});
  return pixels;
}();

template <uint64_t kBytes>
inline void CopyStep(uint8_t* to, const uint8_t* from) {
  uint8_t piece[kBytes];  // a register: source and target may overlap
  std::memcpy(piece, from, kBytes);
  std::memcpy(to, piece, kBytes);
}

// The steps are in order, so the target may begin `kStep` bytes or more into the source.
[[gnu::noinline]] void CopyLong(uint8_t* to, const uint8_t* from, uint64_t length) {
  for (uint64_t i = 0; i < length; i += kLongStep) {
    CopyStep<kStep>(to + i, from + i);
    CopyStep<kStep>(to + i + kStep, from + i + kStep);
  }
}

inline void CopyForward(uint8_t* to, const uint8_t* from, uint64_t length) {
  CopyStep<kStep>(to, from);
  if (length > kStep) [[unlikely]]
    CopyLong(to + kStep, from + kStep, length - kStep);
}

inline uint64_t Load64(const uint8_t* bytes) {
  uint64_t value = 0;
  std::memcpy(&value, bytes, sizeof value);
  return value;
}

// Copies a string, 2 pixels or more, of which the last lies where the first is put. A short one is put together
// before it is stored: the code after it is likely to want it, and loading what two stores made is slow.
[[gnu::noinline]] void CopyWithFirst(uint8_t* to, const uint8_t* from, uint64_t length) {
  if (length <= sizeof(uint64_t)) [[likely]] {
    const uint64_t pixels = Load64(from), shift = 8 * (length - 1);
    const uint64_t piece = (pixels & ((uint64_t{1} << shift) - 1)) | pixels << shift;
    std::memcpy(to, &piece, sizeof piece);
  } else {
    CopyForward(to, from, length);
    to[length - 1] = to[0];
  }
}

// A string in the image: how many pixels it has, below, and the place of the first, above. As one word it is found
// with one load and noted with one store (photographs a tenth faster than with fields of their own).
using String = uint64_t;
constexpr String kNoString = ~String{0};  // longer than any

constexpr String MakeString(uint64_t place, uint64_t length) { return place << 32 | length; }
constexpr uint64_t Place(String string) { return string >> 32; }
constexpr uint64_t Length(String string) { return static_cast<uint32_t>(string); }
constexpr String OneMore(String string) { return string + 1; }  // pixel

// Where a row began: `last_code`, `stack_depth` and `stack` as the row decoder's call found them. Of `stack` there is
// as much as that depth can bring back, with what later strings left on it.
struct RowStart {
  int32_t last_code;
  int32_t stack_depth;
  uint8_t stack[kTableSize];
};

class ImageDecoder {
 public:
  ImageDecoder(MyFILE* stream, CodeInput* input, int32_t code_size, GifPicture* picture);
  bool Decode();

 private:
  bool MakeRoom(uint64_t room);
  bool NeedsRoom() const { return room_ < total_ && done_ + kTableSize > room_; }
  bool HasCodes() const;
  bool DecodeCodes();
  void WidenCodes();
  bool DecodeOne();
  void Append(String string, bool own);
  void RestartCodes();
  void Clear();

  int32_t CodesSinceClear() const { return next_ - end_code_; }
  String SinceClear(int32_t index) const;
  int32_t CodeSinceClear(int32_t index) const;
  int32_t FirstOfRow(uint64_t row) const;
  uint64_t Column() const { return (done_ - kFirstPixel) % width_; }
  void SaveRow();
  GifDecoder Exact() const;
  bool HandOver();
  void KeepWholeRows();
  bool ReadTail(GifDecoder* exact, uint8_t* line, int32_t got);

  MyFILE* stream_;
  CodeInput* input_;
  GifPicture* picture_;
  int32_t code_size_, clear_code_, end_code_;  // as `GifDecoder` has them
  int32_t code_width_, width_limit_;
  uint64_t width_;
  uint64_t total_;                     // the place behind the image's last pixel
  uint64_t room_ = 0;                  // the place behind the last pixel that there is memory for
  uint8_t* memory_ = nullptr;          // the single pixels, the image, `kSpare` bytes
  uint64_t ahead_ = 0;                 // bytes of the memory before them
  uint64_t done_ = kFirstPixel;        // the place behind the last pixel decoded; up to `kSpare` beyond `room_`
  uint64_t cleared_at_ = kFirstPixel;  // `done_` at the last clear code
  int32_t first_bit_ = 0;              // of the first code since then, in the first byte that `input_` keeps
  String latest_ = 0;                  // by the previous code
  int32_t next_;  // the entry that the next code defines; `end_code_`, standing for none, after a clear code
  RowStart row_;  // of the row in which the last clear code came
  String strings_[kTableSize];  // by code: that of the code before it and the pixel that follows there
};

static_assert(sizeof(CodeInput) + sizeof(ImageDecoder) + sizeof(GifDecoder) < 104 * 1024);  // all lie on the stack

ImageDecoder::ImageDecoder(MyFILE* stream, CodeInput* input, int32_t code_size, GifPicture* picture)
    : stream_(stream),
      input_(input),
      picture_(picture),
      code_size_(code_size),
      clear_code_(1 << code_size),
      end_code_(clear_code_ + 1),
      width_(static_cast<uint64_t>(picture->width)),
      total_(kFirstPixel + width_ * static_cast<uint64_t>(picture->height)) {
  RestartCodes();
  row_.stack_depth = 0;
  const auto clear_code = static_cast<uint64_t>(clear_code_);
  for (uint64_t code = 0; code < clear_code; ++code) strings_[code] = MakeString(code & 0xFF, 1);
  strings_[clear_code] = strings_[clear_code + 1] = kNoString;
}

// Makes the memory, or moves it to more. False, with nothing changed, when there is not so much.
bool ImageDecoder::MakeRoom(uint64_t room) {
  const uint64_t size = room + kSpare;
  const bool may_fill = !memory_ && room == total_;
  const MemoryToFill got = may_fill ? AllocateToFill(size) : MemoryToFill{std::realloc(memory_, size), 0};
  if (!got.memory) return false;
  picture_->memory = got.memory;
  ahead_ = got.start;
  memory_ = static_cast<uint8_t*>(got.memory) + ahead_;
  room_ = room;
  return true;
}

// An image that the data may fill gets its memory at once. Another grows as it is decoded: a hostile file names a
// large image in a few bytes.
bool ImageDecoder::Decode() {
  constexpr uint64_t kMostPixelsPerByte = 8192;  // several times what data of this format achieve
  constexpr uint64_t kLeastRoom = 4 * kBatch * kTableSize;
  if (!input_->Gather(stream_)) return true;
  const uint64_t likely = static_cast<uint64_t>(input_->block_len) * kMostPixelsPerByte;
  if (!MakeRoom(std::min(total_, kFirstPixel + std::max(likely, kLeastRoom)))) return false;
  std::memcpy(memory_, kSingles.data(), kSingles.size());
  while (done_ < total_) {
    if (NeedsRoom() && !MakeRoom(std::min(total_, 2 * room_))) return false;
    if (HasCodes() && DecodeCodes()) continue;
    if (done_ < total_ && !NeedsRoom() && !DecodeOne()) return HandOver();
  }
  done_ = total_;
  KeepWholeRows();
  return true;
}

// Whether there are bits for a code of this width, and a string that it makes an entry of.
bool ImageDecoder::HasCodes() const {
  const int32_t bits = 8 * (input_->block_len - input_->block_pos) + input_->bit_count;
  return next_ != end_code_ && next_ < width_limit_ && bits >= code_width_;
}

// The codes of one width, several from each load of bits, to the end of the bytes at hand or of the room. False
// before a code that is not plainly sound, or whose string does not fit.
//
// What the loop keeps is in locals, which the stores of pixels cannot change, and is as little as can be: there are
// registers for nearly all of it with any compiler. All that is unusual about a code shows in two comparisons.
bool ImageDecoder::DecodeCodes() {
  static_assert(sizeof CodeInput::block >= CodeInput::kMostBytes + sizeof(uint64_t));  // a load at the last byte
  const int32_t width = code_width_;
  const uint64_t mask = (uint64_t{1} << width) - 1;
  const uint8_t* const in = input_->block;
  auto bit = static_cast<uint32_t>(8 * input_->block_pos - input_->bit_count);
  int64_t next = next_;
  const int64_t stop =
      next + std::min(width_limit_ - next_, (8 * input_->block_len - static_cast<int32_t>(bit)) / width);
  const uint64_t room = room_;
  uint8_t* const pixels = memory_;
  String* const strings = strings_;
  uint64_t done = done_;
  String entry = OneMore(latest_);

  const auto decode = [&](uint64_t& codes) GIF_ALWAYS_INLINE {
    const auto code = static_cast<int64_t>(codes & mask);
    String string = strings[code];
    strings[next] = entry;
    uint8_t* const to = pixels + done;
    if (code >= next || Length(string) > kStep) [[unlikely]] {
      const bool own = code >= next;
      if (own) {
        if (code != next) return false;
        string = entry;
      }
      if (done + Length(string) > room) return false;
      if (own) {
        CopyWithFirst(to, pixels + Place(string), Length(string));
      } else {
        CopyForward(to, pixels + Place(string), Length(string));
      }
    } else {
      CopyStep<kStep>(to, pixels + Place(string));
    }
    entry = OneMore(MakeString(done, Length(string)));
    done += Length(string);
    ++next;
    codes >>= width;
    return true;
  };
  bool sound = true;
  while (sound && stop - next >= kBatch && done < room) {
    uint64_t codes = Load64(in + bit / 8) >> bit % 8;
    bit += static_cast<uint32_t>(kBatch * width);
    sound = decode(codes) && decode(codes) && decode(codes) && decode(codes);  // NOLINT(misc-redundant-expression)
  }
  while (sound && next != stop && done < room) {
    uint64_t codes = Load64(in + bit / 8) >> bit % 8;
    bit += static_cast<uint32_t>(width);
    sound = decode(codes);
  }
  const int32_t end = 8 * input_->block_pos - input_->bit_count + static_cast<int32_t>(next - next_) * code_width_;
  input_->block_pos = (end + 7) / 8;
  input_->bit_count = 8 * input_->block_pos - end;
  input_->bit_buffer = input_->bit_count == 0 ? 0 : in[end / 8] >> end % 8;
  next_ = static_cast<int32_t>(next);
  done_ = done;
  latest_ = entry - 1;
  WidenCodes();
  return sound;
}

void ImageDecoder::WidenCodes() {
  if (next_ < width_limit_ || code_width_ == kMaxCodeWidth) return;
  width_limit_ *= 2;
  code_width_++;
}

// One code, wherever it stands. False, with nothing taken, when the row decoder must see to it.
bool ImageDecoder::DecodeOne() {
  const int32_t width = code_width_;
  if (!input_->Fill(stream_, width)) return false;
  const int32_t code = input_->Peek(width);
  if (code == clear_code_) {
    input_->Drop(width);
    Clear();
    return true;
  }
  const bool first = next_ == end_code_;
  if (first ? code > clear_code_ : code > next_ || next_ == kTableSize) return false;
  if (!first) strings_[next_] = OneMore(latest_);
  if (strings_[code] == kNoString) return false;
  Append(strings_[code], code == next_);
  input_->Drop(width);
  return true;
}

// Puts a code's string into the image, as much of it as there is room for. The code may be that of the entry that it
// has defined itself.
void ImageDecoder::Append(String string, bool own) {
  const uint64_t length = Length(string), fitting = std::min(length, total_ - done_);
  CopyForward(memory_ + done_, memory_ + Place(string), fitting);
  if (own && fitting == length) memory_[done_ + length - 1] = memory_[done_];
  latest_ = MakeString(done_, length);
  done_ += fitting;
  next_++;
  WidenCodes();
}

void ImageDecoder::RestartCodes() {
  code_width_ = code_size_ + 1;
  width_limit_ = 1 << code_width_;
  next_ = end_code_;
  row_.last_code = kNoCode;
}

void ImageDecoder::Clear() {
  SaveRow();
  RestartCodes();
  cleared_at_ = done_;
  first_bit_ = input_->KeepFromHere();
}

// What the codes since the last clear code put into the image, in order. Each but the latest is half of an
// entry.
String ImageDecoder::SinceClear(int32_t index) const {
  return index == CodesSinceClear() - 1 ? latest_ : strings_[end_code_ + 1 + index] - 1;
}

// Those codes themselves, from the data once more.
int32_t ImageDecoder::CodeSinceClear(int32_t index) const {
  int32_t width = code_size_ + 1, bit = 8 * input_->keep_from + first_bit_, first = 0;  // code of that width
  while (width < kMaxCodeWidth) {
    const int32_t end = std::max((1 << width) - end_code_, first + 1);  // at least one: with a code size of 0
    if (index < end) break;
    bit += (end - first) * width++;
    first = end;
  }
  bit += (index - first) * width;
  return static_cast<int32_t>(Load64(input_->block + bit / 8) >> bit % 8 & ((uint64_t{1} << width) - 1));
}

// The code that put the pixel before a row into the image. The row begins after the clear code.
int32_t ImageDecoder::FirstOfRow(uint64_t row) const {
  int32_t low = 0, high = CodesSinceClear();
  while (high - low > 1) {
    const int32_t middle = (low + high) / 2;
    (Place(SinceClear(middle)) < row ? low : high) = middle;
  }
  return low;
}

// Brings `row_` up to the present row.
void ImageDecoder::SaveRow() {
  const uint64_t row = done_ - Column();
  int32_t first = 0;
  if (row > cleared_at_) {
    first = FirstOfRow(row);
    const String across = SinceClear(first);
    row_.last_code = CodeSinceClear(first);
    row_.stack_depth = static_cast<int32_t>(Place(across) + Length(across) - row);
  }
  // Each table code pushed its string onto the empty stack, last pixel first, over those before it.
  const auto depth = static_cast<uint64_t>(row_.stack_depth);
  uint64_t filled = 0;
  for (int32_t i = CodesSinceClear() - 1; i >= first && filled < depth; --i) {
    const String string = SinceClear(i);
    if (Length(string) == 1) continue;
    const uint8_t* last = memory_ + Place(string) + Length(string) - 1;
    const uint64_t end = std::min(Length(string), depth);
    for (; filled < end; ++filled) row_.stack[filled] = *(last - filled);
  }
}

// The row decoder as it would be in the middle of the present row, of which `row_` tells the beginning.
GifDecoder ImageDecoder::Exact() const {
  GifDecoder exact;
  SetUpGifDecoder(&exact, code_size_);
  exact.code_count = next_ + 1;
  exact.code_width = code_width_;
  exact.width_limit = width_limit_;
  exact.last_code = row_.last_code;
  exact.stack_depth = row_.stack_depth;
  exact.input = input_;
  std::copy_n(row_.stack, row_.stack_depth, exact.stack);
  for (int32_t entry = end_code_ + 1; entry < next_; ++entry) {
    const String string = strings_[entry];
    DefineEntry(&exact, entry, CodeSinceClear(entry - end_code_ - 1), memory_[Place(string) + Length(string) - 1]);
  }
  return exact;
}

// Gives the picture the rows decoded so far, without the row begun.
void ImageDecoder::KeepWholeRows() {
  const uint64_t end = done_ - Column();
  if (end == kFirstPixel) {
    std::free(picture_->memory);
    picture_->memory = nullptr;
    return;
  }
  const uint64_t count = end - kFirstPixel;
  picture_->pixel_count = static_cast<int64_t>(count);
  if (count <= kFirstPixel && ahead_ == 0) {  // as small as what stands before it: there may be very many such images
    std::memmove(memory_, memory_ + kFirstPixel, count);
    Shrink(picture_->memory, count);
    picture_->pixels = static_cast<uint8_t*>(picture_->memory);
    return;
  }
  if (end < room_) Shrink(picture_->memory, ahead_ + end);
  picture_->pixels = static_cast<uint8_t*>(picture_->memory) + ahead_ + kFirstPixel;
}

// The row decoder's rows, of which the first got so many pixels and the others are still to be read.
bool ImageDecoder::ReadTail(GifDecoder* exact, uint8_t* line, int32_t got) {
  GifRowTail* tail = picture_->tail = NewRecord<GifRowTail>();
  if (!tail) return false;
  const int32_t width = picture_->width;
  auto position = static_cast<int32_t>((done_ - kFirstPixel) / width_);
  bool for_good = false;
  while (AddRow(tail, position++, {line, got}, for_good)) {
    if (for_good || position == picture_->height) {
      TrimTail(tail);
      return true;
    }
    for_good = OnlyZerosFollow(exact) || RepeatsForGood(exact, width);
    got = OnlyZerosFollow(exact) ? 0 : ReadGifLine(stream_, exact, line, width);
  }
  return false;
}

// Lets the row decoder finish the image from here.
[[gnu::noinline]] bool ImageDecoder::HandOver() {
  const Owned<uint8_t> line(static_cast<uint8_t*>(std::malloc(width_)));
  if (!line) return false;
  SaveRow();
  GifDecoder exact = Exact();
  const int32_t last_code = next_ == end_code_ ? kNoCode : CodeSinceClear(CodesSinceClear() - 1);
  input_->keep_from = CodeInput::kKeepNone;
  const uint64_t column = Column();
  std::memcpy(line.get(), memory_ + done_ - column, column);
  KeepWholeRows();
  const int32_t got =
      ContinueGifLine(stream_, &exact, line.get(), picture_->width, static_cast<int32_t>(column), last_code);
  return ReadTail(&exact, line.get(), got);
}

}  // namespace

bool DecodeImage(MyFILE* stream, CodeInput* input, int32_t code_size, GifPicture* picture) {
  picture->in_passes = picture->interlace;
  return ImageDecoder(stream, input, code_size, picture).Decode();
}
