// The classes "Picture" and "Graphics", as scripts and the plugin see them.

#include <algorithm>
#include <stdexcept>
#include <vector>

#include "host/classes/drawing.h"
#include "host/classes/host_classes.h"
#include "host/classes/native.h"
#include "host/classes/picture_colors.h"
#include "host/classes/picture_file.h"
#include "host/classes/picture_making.h"
#include "host/core/text.h"
#include "host/host/picture.h"

namespace host {
namespace {

// Stands for "the whole of it" where a size is left out.
constexpr int64_t kWhole = -10000;

int64_t SizeOr(int64_t size, int64_t whole) { return size == kWhole ? whole : size; }

const std::string& Bytes(REALstringStruct* handle) {
  static const std::string none;
  const String* text = Self<String>(handle);
  return text == nullptr ? none : text->bytes();
}

void Construct(REALobjectStruct* self, int64_t width, int64_t height) {
  if (Self<Picture>(self)->Create(Host::Current().options(), width, height)) return;
  throw std::runtime_error(Text("A picture of ", width, " by ", height, " pixels can't be made."));
}

void ConstructFromFile(REALobjectStruct* self, REALstringStruct* path) {
  LoadPng(Host::Current(), *Self<Picture>(self), Bytes(path));
}

void ConstructFromText(REALobjectStruct* self, REALstringStruct* text, REALstringStruct* font, int64_t size,
                       uint32_t rgb) {
  DrawLetters(Host::Current(), *Self<Picture>(self), {Bytes(text), Bytes(font), size, rgb});
}

int64_t GetWidth(REALobjectStruct* self, int64_t) { return Self<Picture>(self)->width(); }
int64_t GetHeight(REALobjectStruct* self, int64_t) { return Self<Picture>(self)->height(); }
int64_t GetDepth(REALobjectStruct* /*self*/, int64_t) { return 32; }
int8_t GetHasAlphaChannel(REALobjectStruct* /*self*/, int64_t) { return 0; }

REALpictureStruct* GetMask(REALobjectStruct* self, int64_t) {
  return HandOut<REALpictureStruct>(Self<Picture>(self)->mask());
}

void SetMask(REALobjectStruct* self, int64_t, REALpictureStruct* mask) {
  if (Self<Picture>(self)->SetMask(Ref<Picture>(Self<Picture>(mask)))) return;
  throw std::runtime_error("A picture that has a mask can't be a mask.");
}

REALobjectStruct* GetGraphics(REALobjectStruct* self, int64_t) {
  return HandOut<REALobjectStruct>(NewGraphics(Host::Current(), Ref<Picture>(Self<Picture>(self))));
}

void RequirePixel(const Picture& picture, int64_t x, int64_t y) {
  if (picture.Contains(x, y)) return;
  throw RaisedException("OutOfBoundsException", Text("Pixel ", x, ", ", y, " of a picture of ", picture.width(),
                                                     " by ", picture.height(), " pixels."));
}

uint32_t GetPixel(REALobjectStruct* self, int64_t x, int64_t y) {
  const auto& picture = *Self<Picture>(self);
  RequirePixel(picture, x, y);
  return picture.pixels().Get(static_cast<int>(x), static_cast<int>(y));
}

void SetPixel(REALobjectStruct* self, int64_t x, int64_t y, uint32_t rgb, int64_t opacity) {
  auto& picture = *Self<Picture>(self);
  RequirePixel(picture, x, y);
  Blend(picture, static_cast<int>(x), static_cast<int>(y), rgb,
        static_cast<uint32_t>(std::clamp<int64_t>(opacity, 0, 255)));
}

REALstringStruct* GetPixelBytes(REALobjectStruct* self, int64_t x, int64_t y) {
  const auto& picture = *Self<Picture>(self);
  RequirePixel(picture, x, y);
  const uint8_t* bytes = picture.pixels().At(static_cast<int>(x), static_cast<int>(y));
  return StringResult({reinterpret_cast<const char*>(bytes), picture.pixels().pixel_size()});
}

REALstringStruct* GetRgb(REALobjectStruct* self) {
  const auto& picture = *Self<Picture>(self);
  std::string bytes;
  bytes.reserve(static_cast<size_t>(picture.width()) * static_cast<size_t>(picture.height()) * 3);
  std::vector<uint32_t> row(static_cast<size_t>(picture.width()));
  for (int y = 0; y < picture.height(); ++y) {
    picture.pixels().Read(0, y, row);
    for (const uint32_t rgb : row) {
      for (const uint32_t shift : {16u, 8u, 0u}) bytes += static_cast<char>(rgb >> shift);
    }
  }
  return StringResult(bytes);
}

void FillRect(REALobjectStruct* self, int64_t x, int64_t y, int64_t width, int64_t height, uint32_t rgb) {
  FillRectangle(*Self<Picture>(self), {x, y, width, height}, rgb);
}

void DrawString(REALobjectStruct* self, int64_t x, int64_t y, REALstringStruct* text, uint32_t rgb) {
  if (const String* string = Self<String>(text)) DrawText(*Self<Picture>(self), x, y, string->bytes(), rgb);
}

// Without a target's size it is the source part's own.
void Draw(Picture* onto, REALpictureStruct* image, const Rectangle& target, const Rectangle& part) {
  const Picture* source = Self<Picture>(image);
  if (onto == nullptr || source == nullptr) return;
  const Rectangle whole_part{part.x, part.y, SizeOr(part.width, source->width()),
                             SizeOr(part.height, source->height())};
  DrawPicture(*onto,
              {target.x, target.y, SizeOr(target.width, whole_part.width), SizeOr(target.height, whole_part.height)},
              *source, whole_part);
}

void DrawOnPicture(REALobjectStruct* self, REALpictureStruct* image, int64_t x, int64_t y, int64_t w, int64_t h,
                   int64_t sx, int64_t sy, int64_t sw, int64_t sh) {
  Draw(Self<Picture>(self), image, {x, y, w, h}, {sx, sy, sw, sh});
}

void DrawOnGraphics(REALobjectStruct* self, REALpictureStruct* image, int64_t x, int64_t y, int64_t w, int64_t h,
                    int64_t sx, int64_t sy, int64_t sw, int64_t sh) {
  Draw(Self<Graphics>(self)->picture.get(), image, {x, y, w, h}, {sx, sy, sw, sh});
}

REALpictureStruct* GetScaled(REALobjectStruct* self, int64_t width, int64_t height) {
  return HandOut<REALpictureStruct>(Scaled(Host::Current(), *Self<Picture>(self), width, height));
}

REALpictureStruct* GetDifference(REALobjectStruct* self, REALpictureStruct* other) {
  const auto* second = Self<Picture>(other);
  if (second == nullptr) throw std::runtime_error("A picture is needed.");
  return HandOut<REALpictureStruct>(Difference(Host::Current(), *Self<Picture>(self), *second));
}

REALstringStruct* GetColors(REALobjectStruct* self, int64_t most) {
  return StringResult(ListOf(DistinctColors(*Self<Picture>(self), static_cast<size_t>(std::max<int64_t>(0, most)))));
}

REALmemoryBlockStruct* GetIndexes(REALobjectStruct* self, REALstringStruct* colors, int64_t transparent) {
  const auto& picture = *Self<Picture>(self);
  const auto size = static_cast<size_t>(picture.width()) * static_cast<size_t>(picture.height());
  const Ref<MemoryBlock> block = NewMemoryBlock(Host::Current(), size);
  NearestIndexes(picture, ColorsOf(Bytes(colors)), transparent, {block->bytes(), size});
  return HandOut<REALmemoryBlockStruct>(block);
}

REALstringStruct* GetPng(REALobjectStruct* self) { return StringResult(EncodePng(*Self<Picture>(self))); }

void Save(REALobjectStruct* self, REALstringStruct* path) { SavePng(*Self<Picture>(self), Bytes(path)); }

void AddPictureClass(Host& host) {
  const REALproperty properties[] = {
      PropertyRow("Width", "Integer", Native<GetWidth>),
      PropertyRow("Height", "Integer", Native<GetHeight>),
      PropertyRow("Depth", "Integer", Native<GetDepth>),
      PropertyRow("HasAlphaChannel", "Boolean", Native<GetHasAlphaChannel>),
      PropertyRow("Mask", "Picture", Native<GetMask>, Native<SetMask>),
      PropertyRow("Graphics", "Graphics", Native<GetGraphics>),
  };
  const REALmethodDefinition methods[] = {
      MethodRow("Constructor(width as Integer, height as Integer)", Native<Construct>),
      MethodRow("Constructor(path as String)", Native<ConstructFromFile>),
      MethodRow("Constructor(text as String, font as String, size as Integer, rgb as Color)",
                Native<ConstructFromText>),
      MethodRow("Pixel(x as Integer, y as Integer) as Color", Native<GetPixel>),
      MethodRow("SetPixel(x as Integer, y as Integer, rgb as Color, opacity as Integer = 255)", Native<SetPixel>),
      MethodRow("PixelBytes(x as Integer, y as Integer) as String", Native<GetPixelBytes>),
      MethodRow("RGB() as String", Native<GetRgb>),
      MethodRow("FillRect(x as Integer, y as Integer, w as Integer, h as Integer, rgb as Color)", Native<FillRect>),
      MethodRow("DrawText(x as Integer, y as Integer, text as String, rgb as Color = 0)", Native<DrawString>),
      MethodRow("DrawPicture(Image as Picture, x as Integer, y as Integer, w as Integer = -10000, "
                "h as Integer = -10000, sx as Integer = 0, sy as Integer = 0, sw as Integer = -10000, "
                "sh as Integer = -10000)",
                Native<DrawOnPicture>),
      MethodRow("Scaled(w as Integer, h as Integer) as Picture", Native<GetScaled>),
      MethodRow("Difference(image as Picture) as Picture", Native<GetDifference>),
      MethodRow("Colours(most as Integer = 256) as String", Native<GetColors>),
      MethodRow("Indexes(colours as String, transparent as Integer = -1) as MemoryBlock", Native<GetIndexes>),
      MethodRow("PNG() as String", Native<GetPng>),
      MethodRow("SavePNG(path as String)", Native<Save>),
  };
  AddMembers(host.AddClass("Picture", MakeInstance<Picture>), properties, methods);
}

void AddGraphicsClass(Host& host) {
  const REALmethodDefinition methods[] = {
      MethodRow("DrawPicture(Image as Picture, x as Integer, y as Integer, w as Integer, h as Integer, "
                "sx as Integer = 0, sy as Integer = 0, sw as Integer = -10000, sh as Integer = -10000)",
                Native<DrawOnGraphics>),
  };
  AddMembers(host.AddClass("Graphics", MakeInstance<Graphics>), {}, methods);
}

}  // namespace

void AddPictureClasses(Host& host) {
  AddGraphicsClass(host);
  AddPictureClass(host);
}

}  // namespace host
