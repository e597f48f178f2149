// The class "Film", as scripts see it: host/reducing/film.h.

#include <cstring>
#include <new>
#include <optional>
#include <string>

#include "host/core/text.h"
#include "host/host/memory_block.h"
#include "host/host/native.h"
#include "host/host/picture.h"
#include "host/host/string.h"
#include "host/reducing/film.h"

namespace host {
namespace {

constexpr int64_t kMostPixels = int64_t{1} << 26;
constexpr int64_t kLongestSide = 32767;
constexpr uint32_t kHalfTransparent = 128;

class FilmObject : public Object {
 public:
  static constexpr const char* kKind = "film";
  using Object::Object;
  const char* kind() const override { return kKind; }

  std::optional<Film> film;  // none until constructed
  bool planned = false;
  StoredImage image;  // the last that Next gave
};

void Raise(const char* exception, const std::string& message) { Host::Current().Raise(exception, message); }

// What f(film) gives, or `failed` with an exception raised: when there is no film, in the wrong state, or no memory.
template <class Result, class F>
Result With(REALobjectStruct* self, bool planned, Result failed, F f) {
  auto& object = *Self<FilmObject>(self);
  if (!object.film || object.planned != planned) {
    Raise("RuntimeException", !object.film ? "A film needs a size."
                              : planned    ? "A film is planned before its images are made."
                                           : "A film that is planned takes no more frames.");
    return failed;
  }
  try {
    return f(*object.film);
  } catch (const std::bad_alloc&) {
    Raise("OutOfMemoryException", "There is no memory for a film.");
    return failed;
  }
}

void Construct(REALobjectStruct* self, int64_t width, int64_t height) {
  const bool can_be =
      width > 0 && height > 0 && width <= kLongestSide && height <= kLongestSide && width * height <= kMostPixels;
  if (!can_be)
    return Raise("OutOfBoundsException", Text("A film of ", width, " by ", height, " pixels can't be made."));
  try {
    Self<FilmObject>(self)->film.emplace(static_cast<int>(width), static_cast<int>(height));
  } catch (const std::bad_alloc&) {
    Raise("OutOfMemoryException", "There is no memory for a film.");
  }
}

std::vector<uint32_t> ColorsFrom(std::string_view bytes) {
  std::vector<uint32_t> colors(bytes.size() / 3);
  const auto byte = [&](size_t at) { return uint32_t{static_cast<uint8_t>(bytes[at])}; };
  for (size_t i = 0; i < colors.size(); ++i) colors[i] = byte(3 * i) << 16 | byte(3 * i + 1) << 8 | byte(3 * i + 2);
  return colors;
}

std::string BytesOf(const std::vector<uint32_t>& colors) {
  std::string bytes;
  for (const uint32_t color : colors) {
    for (const uint32_t shift : {16u, 8u, 0u}) bytes += static_cast<char>(color >> shift);
  }
  return bytes;
}

int8_t Draw(REALobjectStruct* self, REALobjectStruct* pixels, REALstringStruct* colors, int64_t transparent,
            int64_t left, int64_t top, int64_t width, int64_t height, int64_t disposal) {
  return With<int8_t>(self, false, 0, [&](Film& film) -> int8_t {
    const MemoryBlock* block = Self<MemoryBlock>(pixels);
    const String* text = Self<String>(colors);
    constexpr int64_t kMost = 65535;
    if (block == nullptr || left < 0 || top < 0 || left > kMost || top > kMost || width < 1 || height < 1 ||
        width > kMost || height > kMost || width * height > block->size()) {
      return 0;
    }
    const std::vector<uint32_t> table = ColorsFrom(text == nullptr ? "" : text->bytes());
    const auto place = [](int64_t value) { return static_cast<int>(value); };
    return film.Draw({{place(left), place(top), place(left + width), place(top + height)},
                      {reinterpret_cast<const uint8_t*>(block->bytes()), static_cast<size_t>(width * height)},
                      table,
                      place(transparent),
                      place(disposal)})
               ? 1
               : 0;
  });
}

void ShowPicture(REALobjectStruct* self, REALpictureStruct* image, int64_t left, int64_t top) {
  const Picture* picture = Self<Picture>(image);
  if (picture == nullptr) return;
  With<int>(self, false, 0, [&](Film& film) {
    Canvas& canvas = film.canvas();
    if (left < 0 || top < 0 || left + picture->width() > canvas.width || top + picture->height() > canvas.height) {
      Raise("OutOfBoundsException", Text("A picture of ", picture->width(), " by ", picture->height(), " pixels at ",
                                         left, ", ", top, " lies beyond the film."));
      return 0;
    }
    std::fill(canvas.pixels.begin(), canvas.pixels.end(), kClear);
    std::vector<uint32_t> transparency(static_cast<size_t>(picture->width()));
    for (int y = 0; y < picture->height(); ++y) {
      const std::span<uint32_t> row(canvas.row(y + static_cast<int>(top)) + left, transparency.size());
      picture->pixels().Read(0, y, row);
      if (!picture->mask()) continue;
      picture->ReadTransparency(0, y, transparency);
      for (size_t x = 0; x < row.size(); ++x) {
        if (transparency[x] >= kHalfTransparent) row[x] = kClear;
      }
    }
    return 0;
  });
}

int8_t GetChanged(REALobjectStruct* self, int64_t) {
  return With<int8_t>(self, false, 0, [](Film& film) -> int8_t { return film.Changed() ? 1 : 0; });
}

void KeepFrame(REALobjectStruct* self) {
  With<int>(self, false, 0, [](Film& film) { return film.Keep(), 0; });
}

int8_t Plan(REALobjectStruct* self, int64_t colors, int8_t exact, int64_t tables, int64_t dithering,
            int64_t tolerance) {
  return With<int8_t>(self, false, 0, [&](Film& film) -> int8_t {
    if (colors < 2 || colors > 256 || tables < 0 || tables > 2 || dithering < 0 || dithering > 2 || tolerance < 0 ||
        tolerance > 255) {
      Raise("OutOfBoundsException",
            "A film is planned with 2 to 256 colours and kinds of tables and dithering from 0 to 2.");
      return 0;
    }
    const Wishes wishes{static_cast<int>(colors), exact != 0, static_cast<Tables>(tables),
                        static_cast<Dithering>(dithering), static_cast<int>(tolerance)};
    Self<FilmObject>(self)->planned = true;
    return film.Plan(wishes) ? 1 : 0;
  });
}

int8_t Next(REALobjectStruct* self) {
  return With<int8_t>(self, true, 0, [&](Film& film) -> int8_t {
    std::optional<StoredImage> image = film.Next();
    if (!image) return 0;
    Self<FilmObject>(self)->image = std::move(*image);
    return 1;
  });
}

const StoredImage& ImageOf(REALobjectStruct* self) { return Self<FilmObject>(self)->image; }

int64_t GetLeft(REALobjectStruct* self, int64_t) { return ImageOf(self).place.left; }
int64_t GetTop(REALobjectStruct* self, int64_t) { return ImageOf(self).place.top; }
int64_t GetWidth(REALobjectStruct* self, int64_t) { return ImageOf(self).place.width(); }
int64_t GetHeight(REALobjectStruct* self, int64_t) { return ImageOf(self).place.height(); }
int64_t GetTransparent(REALobjectStruct* self, int64_t) { return ImageOf(self).transparent; }
int64_t GetDisposal(REALobjectStruct* self, int64_t) { return ImageOf(self).disposal; }

REALstringStruct* GetColors(REALobjectStruct* self, int64_t) {
  return StringResult(BytesOf(ImageOf(self).own_table.colors()));
}

REALstringStruct* GetTable(REALobjectStruct* self, int64_t) {
  return With<REALstringStruct*>(self, true, nullptr,
                                 [](Film& film) { return StringResult(BytesOf(film.table().colors())); });
}

REALobjectStruct* GetPixels(REALobjectStruct* self) {
  return With<REALobjectStruct*>(self, true, nullptr, [&](Film&) {
    const std::vector<uint8_t>& pixels = ImageOf(self).pixels;
    Host& host = Host::Current();
    const Ref<MemoryBlock> block = host.heap().Make<MemoryBlock>(host.RequireClass("MemoryBlock"));
    if (!block->Resize(static_cast<int64_t>(pixels.size()))) throw std::bad_alloc();
    if (!pixels.empty()) std::memcpy(block->bytes(), pixels.data(), pixels.size());
    return Result(block);
  });
}

Ref<Object> MakeEmpty(Heap& heap, const Class& own_class) { return heap.Make<FilmObject>(own_class); }

}  // namespace

void AddFilmClass(Host& host) {
  const REALproperty properties[] = {
      NativeProperty("Changed", "Boolean", Proc(GetChanged)),
      NativeProperty("Left", "Integer", Proc(GetLeft)),
      NativeProperty("Top", "Integer", Proc(GetTop)),
      NativeProperty("Width", "Integer", Proc(GetWidth)),
      NativeProperty("Height", "Integer", Proc(GetHeight)),
      NativeProperty("Transparent", "Integer", Proc(GetTransparent)),
      NativeProperty("Disposal", "Integer", Proc(GetDisposal)),
      NativeProperty("Colors", "String", Proc(GetColors)),
      NativeProperty("Table", "String", Proc(GetTable)),
  };
  const REALmethodDefinition methods[] = {
      NativeMethod("Constructor(width as Integer, height as Integer)", Proc(Construct)),
      NativeMethod("Draw(pixels as MemoryBlock, colors as String, transparent as Integer, left as Integer, "
                   "top as Integer, width as Integer, height as Integer, disposal as Integer) as Boolean",
                   Proc(Draw)),
      NativeMethod("Show(image as Picture, left as Integer = 0, top as Integer = 0)", Proc(ShowPicture)),
      NativeMethod("Keep()", Proc(KeepFrame)),
      NativeMethod("Plan(colors as Integer, exact as Boolean, tables as Integer = 0, dithering as Integer = 0, "
                   "tolerance as Integer = 0) as Boolean",
                   Proc(Plan)),
      NativeMethod("Next() as Boolean", Proc(Next)),
      NativeMethod("Pixels() as MemoryBlock", Proc(GetPixels)),
  };
  AddMembers(host.AddClass("Film", MakeEmpty), properties, methods);
}

}  // namespace host
