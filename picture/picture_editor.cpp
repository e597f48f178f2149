#include "picture/picture_editor.h"

#include <algorithm>
#include <cstring>

#include "bridge/host_reference.h"
#include "picture/row_renderer.h"
#include "platform/core_graphics.h"

bool IsDesktop = false;
bool IsConsole = false;

namespace {

constexpr long long kMaximumSide = 32767;
constexpr int32_t kDepth = 32;

// 4 bytes for each pixel, the colours at its front or after a leading alpha byte, and rows as long as they
// should be.
bool IsWritable(CGContextRef context) {
  const uint32_t alpha_info = CGBitmapContextGetAlphaInfo(context) % 8;
  return alpha_info != kCGImageAlphaNone && alpha_info != kCGImageAlphaOnly &&
         CGBitmapContextGetBitsPerPixel(context) == kDepth && CGBitmapContextGetData(context) &&
         CGBitmapContextGetBytesPerRow(context) / 4 >= CGBitmapContextGetWidth(context);
}

// A true-colour image that has all the rows that its description promises.
bool IsWritable(const REALgdImage* image, const REALpictureDescription& description) {
  if (image->pixels || !image->tpixels || !image->trueColor) return false;
  if (description.height < 1 || description.width > image->sx || description.height > image->sy) return false;
  return std::none_of(image->tpixels, image->tpixels + description.height, [](int* row) { return row == nullptr; });
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
  if (!REALLockPictureDescription(picture, &description_, kPictureKindCGBitmapContext)) return false;
  IsDesktop = true;
  auto context = static_cast<CGContextRef>(description_.platform_object);
  if (description_.kind != kPictureKindCGBitmapContext || !context || !IsWritable(context)) {
    REALUnlockPictureDescription(picture);
    return false;
  }
  Hold(picture);
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
  if (!REALLockPictureDescription(picture, &description_, kPictureKindGDImage)) return false;
  IsConsole = true;
  auto* image = static_cast<REALgdImage*>(description_.platform_object);
  if (description_.kind != kPictureKindGDImage || !image || !IsWritable(image, description_)) {
    REALUnlockPictureDescription(picture);
    return false;
  }
  Hold(picture);
  pixel_format_ = kGDPixelFormat;
  width_ = description_.width;
  height_ = description_.height;
  row_table_ = image->tpixels;
  first_row_ = reinterpret_cast<uint8_t*>(row_table_[0]);
  cursor_ = first_row_;
  return true;
}

// The new reference comes before the old one goes: they may be the same picture's.
void PictureEditor::Hold(REALpictureStruct* picture) {
  REALLockObject(AsObject(picture));
  if (picture_) REALUnlockObject(AsObject(picture_));
  picture_ = picture;
  row_index_ = 0;
  description_locked_ = true;
}

uint32_t PictureEditor::PixelOf(uint8_t red, uint8_t green, uint8_t blue) const {
  const uint32_t r = red, g = green, b = blue;
  switch (pixel_format_) {
    case kGDPixelFormat:  // libgd's alpha runs the other way: 0 is opaque
      return r << 16 | g << 8 | b;
    case kCGImageAlphaPremultipliedFirst:
    case kCGImageAlphaFirst:
    case kCGImageAlphaNoneSkipFirst:  // bytes 255, red, green, blue
      return b << 24 | g << 16 | r << 8 | 0xFF;
    default:  // bytes red, green, blue, 255
      return 0xFF000000 | b << 16 | g << 8 | r;
  }
}

void PictureEditor::WritePixel(uint8_t red, uint8_t green, uint8_t blue) {
  const uint32_t pixel = PixelOf(red, green, blue);
  std::memcpy(cursor_, &pixel, sizeof pixel);
  cursor_ += sizeof pixel;
}

void PictureEditor::WriteRow(const RowRenderer& renderer, const uint8_t* indexes, int64_t count) {
  renderer.Render(indexes, count, cursor_);
  cursor_ += count * static_cast<int64_t>(sizeof(uint32_t));
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
  REALpictureStruct* rendered = picture_;
  if (rendered) {
    REALLockObject(AsObject(rendered));
    REALPictureClearCache(rendered);
  }
  ReleasePicture();
  return rendered;
}

void PictureEditor::ReleasePicture() {
  if (description_locked_ && picture_) REALUnlockPictureDescription(picture_);
  description_locked_ = false;
  if (clear_cache_ && picture_) REALPictureClearCache(picture_);
  ClearField(picture_);
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
  if (width_ >= width && height_ >= height) return true;
  ReleasePicture();  // the host's bitmap is smaller than what was asked for: rows would not fit
  return false;
}

bool PictureWriter::OpenPixels(REALpictureStruct* picture) {
  if (!IsConsole && GetPictureEditorCGBitmapContext(picture, true, true, true)) return true;
  return !IsDesktop && GetPictureEditorGDImagePtr(picture, true, true);
}
