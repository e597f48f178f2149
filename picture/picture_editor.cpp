#include "picture/picture_editor.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include "bridge/host_reference.h"
#include "picture/row_renderer.h"
#include "platform/frameworks.h"

std::atomic<bool> IsDesktop = false;
std::atomic<bool> IsConsole = false;

namespace {

constexpr long long kMaximumSide = 32767;
constexpr int32_t kDepth = 32;

// 4 bytes for each pixel, the colours at its front or after a leading alpha byte, and rows as long as they
// should be.
bool IsWritable(CGContextRef context) {
  const uint32_t alpha_info = CGBitmapContextGetAlphaInfo(context) % 8;
  return alpha_info != kCGImageAlphaNone && alpha_info != kCGImageAlphaOnly &&
         CGBitmapContextGetBitsPerPixel(context) == kDepth && CGBitmapContextGetData(context) &&
         CGBitmapContextGetHeight(context) >= 1 &&
         CGBitmapContextGetBytesPerRow(context) / 4 >= CGBitmapContextGetWidth(context);
}

// A true-colour image that is at least as large as its description says.
bool IsWritable(const REALgdImage* image, const LockedDescription& description) {
  if (image->pixels || !image->tpixels || !image->trueColor) return false;
  return description.height() >= 1 && description.width() <= image->sx && description.height() <= image->sy;
}

// Hosts tell what they are by the application class that they have.
void FindHostKind() {
  if (IsDesktop || IsConsole) return;
  void* desktop = REALGetClassRef("Application");
  void* web = REALGetClassRef("WebApplication");
  void* console = REALGetClassRef("ConsoleApplication");
  IsDesktop = desktop != nullptr;
  IsConsole = !desktop && (console || web);
}

// The host's kinds of picture that have no pixels of their own to write to.
bool IsPixelPicture(REALpictureStruct* picture) {
  if (!REALGetPictureType) return true;
  const int64_t kind = REALGetPictureType(picture);
  return kind != 0 && kind != 1 && kind != 3;
}

}  // namespace

PictureEditor::~PictureEditor() { ReleasePicture(); }

bool PictureEditor::GetPictureEditorCGBitmapContext(REALpictureStruct* picture, bool, bool, bool) {
  LockedDescription description(picture, kPictureKindCGBitmapContext);
  if (!description) return false;
  IsDesktop = true;
  CGContextRef context = description.platform_object<CGContext>();
  if (!context || !IsWritable(context)) return false;
  Hold(picture, std::move(description));
  pixel_format_ = static_cast<int32_t>(CGBitmapContextGetAlphaInfo(context) % 8);
  row_stride_ = static_cast<int64_t>(CGBitmapContextGetBytesPerRow(context));
  width_ = static_cast<int64_t>(CGBitmapContextGetWidth(context));
  height_ = static_cast<int64_t>(CGBitmapContextGetHeight(context));
  row_table_ = nullptr;
  first_row_ = static_cast<uint8_t*>(CGBitmapContextGetData(context));
  cursor_ = first_row_;
  return true;
}

bool PictureEditor::GetPictureEditorGDImagePtr(REALpictureStruct* picture, bool, bool) {
  LockedDescription description(picture, kPictureKindGDImage);
  if (!description) return false;
  IsConsole = true;
  const auto* image = description.platform_object<REALgdImage>();
  if (!image || !IsWritable(image, description)) return false;
  Hold(picture, std::move(description));
  pixel_format_ = kGDPixelFormat;
  width_ = description_.width();
  height_ = description_.height();
  row_table_ = image->tpixels;
  first_row_ = reinterpret_cast<uint8_t*>(row_table_[0]);
  cursor_ = first_row_;
  return true;
}

void PictureEditor::Hold(REALpictureStruct* picture, LockedDescription description) {
  picture_ = PictureRef::Share(picture);
  description_ = std::move(description);
  row_index_ = 0;
}

PixelFormat PictureEditor::Format() const {
  switch (pixel_format_) {
    case kGDPixelFormat:  // libgd's alpha runs the other way: 0 is opaque
      return {16, 8, 0, 0};
    case kCGImageAlphaPremultipliedFirst:
    case kCGImageAlphaFirst:
    case kCGImageAlphaNoneSkipFirst:  // bytes 255, red, green, blue
      return {8, 16, 24, 0xFF};
    default:  // bytes red, green, blue, 255
      return {0, 8, 16, 0xFF000000};
  }
}

void PictureEditor::WritePixel(uint8_t red, uint8_t green, uint8_t blue) {
  const uint32_t pixel = Format().PixelOf(red, green, blue);
  std::memcpy(cursor_, &pixel, sizeof pixel);
  cursor_ += sizeof pixel;
}

void PictureEditor::WriteRows(const RowRenderer& renderer, std::span<const uint8_t* const> rows, int64_t count) {
  std::array<uint8_t*, kRowsAtOnce> places;
  for (size_t y = 0; y < rows.size(); ++y, NextRow()) places[y] = cursor_;
  renderer.RenderRows(rows, count, places.data());
}

void PictureEditor::NextRow() {
  ++row_index_;
  if (row_index_ >= height_) {
    cursor_ = first_row_;
  } else if (pixel_format_ == kGDPixelFormat) {
    cursor_ = reinterpret_cast<uint8_t*>(row_table_[row_index_]);
  } else {
    cursor_ = first_row_ + row_index_ * row_stride_;
  }
}

REALpictureStruct* PictureEditor::RenderPictureWriter() {
  PictureRef rendered = picture_;
  if (rendered) REALPictureClearCache(rendered.get());
  ReleasePicture();
  return rendered.Detach();
}

void PictureEditor::ReleasePicture() {
  description_ = LockedDescription();
  if (clear_cache_ && picture_) REALPictureClearCache(picture_.get());
  picture_ = PictureRef();
}

bool PictureWriter::NewPictureWriter(long long width, long long height) {
  if (width < 1 || width > kMaximumSide || height < 1 || height > kMaximumSide) return false;
  auto picture = PictureRef::Adopt(REALNewPicture(static_cast<int32_t>(width), static_cast<int32_t>(height), kDepth));
  if (!picture) return false;
  ReleasePicture();
  clear_cache_ = true;
  FindHostKind();
  // Where no reference can be taken, giving up the first one would take the picture away under the editor.
  if (!REALLockObject) return false;
  if (!IsPixelPicture(picture.get()) || !OpenPixels(picture.get())) return false;
  if (HoldsRows(width, height)) return true;
  ReleasePicture();
  return false;
}

// Whether rows of `width` pixels can be written, one after the other; where the host's bitmap has fewer than `height`
// of them, those behind its last one go to its first.
bool PictureWriter::HoldsRows(int64_t width, int64_t height) const {
  if (width_ < width) return false;
  const auto used = std::min(height, height_);
  return !row_table_ || std::none_of(row_table_, row_table_ + used, [](const int* row) { return row == nullptr; });
}

bool PictureWriter::OpenPixels(REALpictureStruct* picture) {
  if (!IsConsole && GetPictureEditorCGBitmapContext(picture, true, true, true)) return true;
  return !IsDesktop && GetPictureEditorGDImagePtr(picture, true, true);
}
