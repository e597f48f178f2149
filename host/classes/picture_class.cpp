// The classes "Picture", "Graphics" and the application's, as scripts and the plugin see them.

#include <algorithm>
#include <vector>

#include "host/classes/drawing.h"
#include "host/classes/picture_colors.h"
#include "host/classes/picture_file.h"
#include "host/classes/picture_making.h"
#include "host/core/text.h"
#include "host/host/native.h"
#include "host/host/picture.h"
#include "host/host/string.h"

namespace host {
namespace {

// Stands for "the whole of it" where a size is left out.
constexpr int64_t kWhole = -10000;

int64_t SizeOr(int64_t size, int64_t whole) { return size == kWhole ? whole : size; }

void Raise(const std::string& message) {
  if (!message.empty()) Host::Current().Raise("RuntimeException", message);
}

void Construct(REALobjectStruct* self, int64_t width, int64_t height) {
  if (Self<Picture>(self)->Create(width, height)) return;
  Raise(Text("A picture of ", width, " by ", height, " pixels can't be made."));
}

void ConstructFromFile(REALobjectStruct* self, REALstringStruct* path) {
  const String* text = Self<String>(path);
  Raise(LoadPng(*Self<Picture>(self), text == nullptr ? "" : text->bytes()));
}

void ConstructFromText(REALobjectStruct* self, REALstringStruct* text, REALstringStruct* font, int64_t size,
                       uint32_t rgb) {
  const String* letters = Self<String>(text);
  const String* name = Self<String>(font);
  if (letters == nullptr || name == nullptr) return Raise("a text and a font are needed");
  Raise(DrawLetters(*Self<Picture>(self), letters->bytes(), name->bytes(), size, rgb));
}

int64_t GetWidth(REALobjectStruct* self, int64_t) { return Self<Picture>(self)->width(); }
int64_t GetHeight(REALobjectStruct* self, int64_t) { return Self<Picture>(self)->height(); }
int64_t GetDepth(REALobjectStruct* /*self*/, int64_t) { return 32; }
int8_t GetHasAlphaChannel(REALobjectStruct* /*self*/, int64_t) { return 0; }

REALobjectStruct* GetMask(REALobjectStruct* self, int64_t) { return Result(Self<Picture>(self)->mask()); }

void SetMask(REALobjectStruct* self, int64_t, REALpictureStruct* mask) {
  if (!Self<Picture>(self)->SetMask(Ref<Picture>(Self<Picture>(mask)))) {
    Raise("A picture that has a mask can't be a mask.");
  }
}

REALobjectStruct* GetGraphics(REALobjectStruct* self, int64_t) {
  return Result(NewGraphics(Ref<Picture>(Self<Picture>(self))));
}

// Whether the pixel exists; raises when it does not.
bool CheckPixel(const Picture& picture, int64_t x, int64_t y) {
  if (picture.Contains(x, y)) return true;
  Host::Current().Raise("OutOfBoundsException", Text("Pixel ", x, ", ", y, " of a picture of ", picture.width(),
                                                     " by ", picture.height(), " pixels."));
  return false;
}

uint32_t GetPixel(REALobjectStruct* self, int64_t x, int64_t y) {
  const auto& picture = *Self<Picture>(self);
  if (!CheckPixel(picture, x, y)) return 0;
  return picture.pixels().Get(static_cast<int>(x), static_cast<int>(y));
}

void SetPixel(REALobjectStruct* self, int64_t x, int64_t y, uint32_t rgb, int64_t opacity) {
  auto& picture = *Self<Picture>(self);
  if (!CheckPixel(picture, x, y)) return;
  Blend(picture, static_cast<int>(x), static_cast<int>(y), rgb,
        static_cast<uint32_t>(std::clamp<int64_t>(opacity, 0, 255)));
}

REALstringStruct* GetPixelBytes(REALobjectStruct* self, int64_t x, int64_t y) {
  const auto& picture = *Self<Picture>(self);
  if (!CheckPixel(picture, x, y)) return nullptr;
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

void Save(REALobjectStruct* self, REALstringStruct* path) {
  const String* text = Self<String>(path);
  Raise(SavePng(*Self<Picture>(self), text == nullptr ? "" : text->bytes()));
}

REALstringStruct* GetPng(REALobjectStruct* self) {
  std::string encoded;
  Raise(EncodePng(*Self<Picture>(self), encoded));
  return StringResult(encoded);
}

REALobjectStruct* GetScaled(REALobjectStruct* self, int64_t width, int64_t height) {
  const Ref<Picture> scaled = Scaled(*Self<Picture>(self), width, height);
  if (!scaled) Raise(Text("A picture of ", width, " by ", height, " pixels can't be made."));
  return Result(scaled);
}

REALobjectStruct* GetDifference(REALobjectStruct* self, REALpictureStruct* other) {
  const auto* second = Self<Picture>(other);
  const Ref<Picture> difference = second == nullptr ? Ref<Picture>() : Difference(*Self<Picture>(self), *second);
  if (!difference) Raise("Pictures of one size are needed.");
  return Result(difference);
}

REALstringStruct* GetColors(REALobjectStruct* self, int64_t most) {
  return StringResult(ListOf(DistinctColors(*Self<Picture>(self), static_cast<size_t>(std::max<int64_t>(0, most)))));
}

REALobjectStruct* GetIndexes(REALobjectStruct* self, REALstringStruct* colors, int64_t transparent) {
  const auto& picture = *Self<Picture>(self);
  const auto size = static_cast<size_t>(picture.width()) * static_cast<size_t>(picture.height());
  const Ref<MemoryBlock> block = NewMemoryBlock(size);
  if (block) NearestIndexes(picture, ColorsOf(colors), transparent, {block->bytes(), size});
  return Result(block);
}

Ref<Object> MakeEmptyPicture(Heap& heap, const Class& own_class) { return heap.Make<Picture>(own_class); }
Ref<Object> MakeEmptyGraphics(Heap& heap, const Class& own_class) { return heap.Make<Graphics>(own_class); }

void AddPictureClass(Host& host) {
  const REALproperty properties[] = {
      NativeProperty("Width", "Integer", Proc(GetWidth)),
      NativeProperty("Height", "Integer", Proc(GetHeight)),
      NativeProperty("Depth", "Integer", Proc(GetDepth)),
      NativeProperty("HasAlphaChannel", "Boolean", Proc(GetHasAlphaChannel)),
      NativeProperty("Mask", "Picture", Proc(GetMask), Proc(SetMask)),
      NativeProperty("Graphics", "Graphics", Proc(GetGraphics)),
  };
  const REALmethodDefinition methods[] = {
      NativeMethod("Constructor(width as Integer, height as Integer)", Proc(Construct)),
      NativeMethod("Constructor(path as String)", Proc(ConstructFromFile)),
      NativeMethod("Constructor(text as String, font as String, size as Integer, rgb as Color)",
                   Proc(ConstructFromText)),
      NativeMethod("Pixel(x as Integer, y as Integer) as Color", Proc(GetPixel)),
      NativeMethod("SetPixel(x as Integer, y as Integer, rgb as Color, opacity as Integer = 255)", Proc(SetPixel)),
      NativeMethod("PixelBytes(x as Integer, y as Integer) as String", Proc(GetPixelBytes)),
      NativeMethod("RGB() as String", Proc(GetRgb)),
      NativeMethod("FillRect(x as Integer, y as Integer, w as Integer, h as Integer, rgb as Color)", Proc(FillRect)),
      NativeMethod("DrawText(x as Integer, y as Integer, text as String, rgb as Color = 0)", Proc(DrawString)),
      NativeMethod("DrawPicture(Image as Picture, x as Integer, y as Integer, w as Integer = -10000, "
                   "h as Integer = -10000, sx as Integer = 0, sy as Integer = 0, sw as Integer = -10000, "
                   "sh as Integer = -10000)",
                   Proc(DrawOnPicture)),
      NativeMethod("Scaled(w as Integer, h as Integer) as Picture", Proc(GetScaled)),
      NativeMethod("Difference(image as Picture) as Picture", Proc(GetDifference)),
      NativeMethod("Colours(most as Integer = 256) as String", Proc(GetColors)),
      NativeMethod("Indexes(colours as String, transparent as Integer = -1) as MemoryBlock", Proc(GetIndexes)),
      NativeMethod("PNG() as String", Proc(GetPng)),
      NativeMethod("SavePNG(path as String)", Proc(Save)),
  };
  AddMembers(host.AddClass("Picture", MakeEmptyPicture), properties, methods);
}

void AddGraphicsClass(Host& host) {
  const REALmethodDefinition methods[] = {
      NativeMethod("DrawPicture(Image as Picture, x as Integer, y as Integer, w as Integer, h as Integer, "
                   "sx as Integer = 0, sy as Integer = 0, sw as Integer = -10000, sh as Integer = -10000)",
                   Proc(DrawOnGraphics)),
  };
  AddMembers(host.AddClass("Graphics", MakeEmptyGraphics), {}, methods);
}

}  // namespace

void AddPictureClasses(Host& host) {
  AddGraphicsClass(host);
  AddPictureClass(host);
}

void AddApplicationClasses(Host& host) {
  const HostOptions& options = host.options();
  const bool desktop = options.pictures == PictureKind::kDesktop;
  const std::string name = options.application.value_or(desktop ? "Application" : "ConsoleApplication");
  if (!name.empty()) host.AddClass(name, nullptr);
}

}  // namespace host
