// The class "Film", as scripts see it: host/reducing/film.h.

#include <cstring>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>

#include "host/classes/host_classes.h"
#include "host/classes/native.h"
#include "host/core/text.h"
#include "host/host/errors.h"
#include "host/host/memory_block.h"
#include "host/host/picture.h"
#include "host/host/string.h"
#include "host/reducing/film.h"
#include "host/reducing/quality.h"

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

[[noreturn]] void OutOfBounds(const std::string& message) { throw RaisedException("OutOfBoundsException", message); }

// The film, which must be there and be planned or not yet.
Film& FilmOf(REALobjectStruct* self, bool planned) {
  auto& object = *Self<FilmObject>(self);
  if (!object.film) throw std::runtime_error("A film needs a size.");
  if (object.planned == planned) return *object.film;
  throw std::runtime_error(planned ? "A film is planned before its images are made."
                                   : "A film that is planned takes no more frames.");
}

void Construct(REALobjectStruct* self, int64_t width, int64_t height) {
  const bool can_be =
      width > 0 && height > 0 && width <= kLongestSide && height <= kLongestSide && width * height <= kMostPixels;
  if (!can_be) OutOfBounds(Text("A film of ", width, " by ", height, " pixels can't be made."));
  Self<FilmObject>(self)->film.emplace(static_cast<int>(width), static_cast<int>(height));
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

int8_t Draw(REALobjectStruct* self, REALmemoryBlockStruct* pixels, REALstringStruct* colors, int64_t transparent,
            int64_t left, int64_t top, int64_t width, int64_t height, int64_t disposal) {
  Film& film = FilmOf(self, false);
  const MemoryBlock* block = Self<MemoryBlock>(pixels);
  const String* text = Self<String>(colors);
  constexpr int64_t kMost = 65535;
  if (block == nullptr || left < 0 || top < 0 || left > kMost || top > kMost || width < 1 || height < 1 ||
      width > kMost || height > kMost || width * height > block->size()) {
    return false;
  }
  const std::vector<uint32_t> table = ColorsFrom(text == nullptr ? "" : text->bytes());
  const auto place = [](int64_t value) { return static_cast<int>(value); };
  return film.Draw({{place(left), place(top), place(left + width), place(top + height)},
                    {reinterpret_cast<const uint8_t*>(block->bytes()), static_cast<size_t>(width * height)},
                    table,
                    place(transparent),
                    place(disposal)});
}

void ShowPicture(REALobjectStruct* self, REALpictureStruct* image, int64_t left, int64_t top) {
  const Picture* picture = Self<Picture>(image);
  if (picture == nullptr) return;
  Canvas& canvas = FilmOf(self, false).canvas();
  if (left < 0 || top < 0 || left + picture->width() > canvas.width || top + picture->height() > canvas.height) {
    OutOfBounds(Text("A picture of ", picture->width(), " by ", picture->height(), " pixels at ", left, ", ", top,
                     " lies beyond the film."));
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
}

int8_t GetChanged(REALobjectStruct* self, int64_t) { return FilmOf(self, false).Changed(); }

void KeepFrame(REALobjectStruct* self) { FilmOf(self, false).Keep(); }

int8_t Plan(REALobjectStruct* self, int64_t colors, int8_t exact, int64_t tables, int64_t dithering,
            int64_t tolerance, int64_t quality) {
  Film& film = FilmOf(self, false);
  if (colors < 2 || colors > 256 || tables < 0 || tables > 2 || dithering < 0 || dithering > 2 || tolerance < 0 ||
      tolerance > 255 || quality < 0 || quality > 100) {
    OutOfBounds("A film is planned with 2 to 256 colours and kinds of tables and dithering from 0 to 2.");
  }
  if (quality > 0 && !CanChooseByQuality()) {
    throw std::runtime_error("This host was built without libimagequant, which finds colours for a quality.");
  }
  const Wishes wishes{static_cast<int>(colors),    exact != 0,
                      static_cast<Tables>(tables), static_cast<Dithering>(dithering),
                      static_cast<int>(tolerance), static_cast<int>(quality)};
  Self<FilmObject>(self)->planned = true;
  return film.Plan(wishes);
}

int8_t Next(REALobjectStruct* self) {
  std::optional<StoredImage> image = FilmOf(self, true).Next();
  if (!image) return false;
  Self<FilmObject>(self)->image = std::move(*image);
  return true;
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
  return StringResult(BytesOf(FilmOf(self, true).table().colors()));
}

REALmemoryBlockStruct* GetPixels(REALobjectStruct* self) {
  FilmOf(self, true);
  const std::vector<uint8_t>& pixels = ImageOf(self).pixels;
  Host& host = Host::Current();
  const Ref<MemoryBlock> block = host.heap().Make<MemoryBlock>(host.RequireClass("MemoryBlock"));
  if (!block->Resize(static_cast<int64_t>(pixels.size()))) throw std::bad_alloc();
  if (!pixels.empty()) std::memcpy(block->bytes(), pixels.data(), pixels.size());
  return HandOut<REALmemoryBlockStruct>(block);
}

}  // namespace

void AddFilmClass(Host& host) {
  const REALproperty properties[] = {
      PropertyRow("Changed", "Boolean", Native<GetChanged>),
      PropertyRow("Left", "Integer", Native<GetLeft>),
      PropertyRow("Top", "Integer", Native<GetTop>),
      PropertyRow("Width", "Integer", Native<GetWidth>),
      PropertyRow("Height", "Integer", Native<GetHeight>),
      PropertyRow("Transparent", "Integer", Native<GetTransparent>),
      PropertyRow("Disposal", "Integer", Native<GetDisposal>),
      PropertyRow("Colors", "String", Native<GetColors>),
      PropertyRow("Table", "String", Native<GetTable>),
  };
  const REALmethodDefinition methods[] = {
      MethodRow("Constructor(width as Integer, height as Integer)", Native<Construct>),
      MethodRow("Draw(pixels as MemoryBlock, colors as String, transparent as Integer, left as Integer, "
                "top as Integer, width as Integer, height as Integer, disposal as Integer) as Boolean",
                Native<Draw>),
      MethodRow("Show(image as Picture, left as Integer = 0, top as Integer = 0)", Native<ShowPicture>),
      MethodRow("Keep()", Native<KeepFrame>),
      MethodRow("Plan(colors as Integer, exact as Boolean, tables as Integer = 0, dithering as Integer = 0, "
                "tolerance as Integer = 0, quality as Integer = 0) as Boolean",
                Native<Plan>),
      MethodRow("Next() as Boolean", Native<Next>),
      MethodRow("Pixels() as MemoryBlock", Native<GetPixels>),
  };
  AddMembers(host.AddClass("Film", MakeInstance<FilmObject>), properties, methods);
}

}  // namespace host
