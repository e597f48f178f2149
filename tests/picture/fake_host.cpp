#include "tests/picture/fake_host.h"

#include <gd.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <string_view>

#include "picture/picture_editor.h"
#include "platform/core_graphics.h"
#include "plugin/host_functions.h"

// Stands for its Graphics, too: they share the count of references.
struct FakePicture {
  int references = 1;
  int locks = 0;
  int width, height;  // as asked for, whatever the records below are made to say
  size_t stride;
  std::vector<uint8_t> memory;
  uint8_t* pixels;
  std::vector<int*> rows;
  CGContext context = {};
  gdImage image = {};
  FakePicture* mask = nullptr;
};

namespace {

constexpr uint8_t kUntouched = 0xEE;
constexpr size_t kMargin = 64;  // bytes around the pixels

FakeHost* host = nullptr;
std::map<std::string, void*> offered;

template <typename Handle>
FakePicture& Of(Handle* handle) {
  return *reinterpret_cast<FakePicture*>(handle);
}

void Note(const char* name) { host->calls.emplace_back(name); }

REALpictureStruct* NewPicture(int32_t width, int32_t height, int32_t) {
  Note("newPicture");
  const HostOptions& options = host->options;
  auto picture = std::make_unique<FakePicture>();
  picture->width = width;
  picture->height = height;
  picture->stride = 4 * static_cast<size_t>(width) + options.padding;
  picture->memory.assign(picture->stride * height + 2 * kMargin, kUntouched);
  picture->pixels = picture->memory.data() + kMargin;
  picture->context = {picture->pixels, static_cast<size_t>(width), static_cast<size_t>(height),
                      picture->stride, options.bits_per_pixel,     options.alpha_info};
  for (int y = 0; y < height; ++y) {
    picture->rows.push_back(static_cast<int*>(static_cast<void*>(picture->pixels + picture->stride * y)));
  }
  picture->image.sx = width;
  picture->image.sy = height;
  picture->image.trueColor = 1;
  picture->image.tpixels = picture->rows.data();
  host->pictures.push_back(std::move(picture));
  return reinterpret_cast<REALpictureStruct*>(host->pictures.back().get());
}

void LockObject(REALobjectStruct* object) { ++Of(object).references; }
void UnlockObject(REALobjectStruct* object) { --Of(object).references; }
int64_t PictureType(REALpictureStruct*) { return host->options.picture_type; }
void* ClassRef(const char* name) { return host->options.application_class == name ? host : nullptr; }

HostBoolean LockDescription(REALpictureStruct* handle, REALpictureDescription* description, int32_t kind) {
  Note(kind == kPictureKindGDImage ? "lock image" : "lock context");
  FakePicture& picture = Of(handle);
  const bool described = kind == kPictureKindGDImage ? host->options.images : host->options.contexts;
  if (!described || host->options.descriptions-- <= 0) return 0;
  void* object = kind == kPictureKindGDImage ? static_cast<void*>(&picture.image) : &picture.context;
  *description = {static_cast<uint32_t>(kind), object, picture.image.sx, picture.image.sy, {}};
  if (host->options.spoil) host->options.spoil(*description);
  ++picture.locks;
  return 1;
}
void UnlockDescription(REALpictureStruct* picture) {
  Note("unlock");
  --Of(picture).locks;
}
void ClearCache(REALpictureStruct*) { Note("clear cache"); }

REALpictureStruct* GetMask(REALpictureStruct* handle, int32_t) {
  FakePicture& picture = Of(handle);
  if (!picture.mask) picture.mask = &Of(NewPicture(picture.image.sx, picture.image.sy, 32));
  ++picture.mask->references;
  return reinterpret_cast<REALpictureStruct*>(picture.mask);
}
REALobjectStruct* GetGraphics(REALpictureStruct* picture) {
  auto* graphics = reinterpret_cast<REALobjectStruct*>(picture);
  LockObject(graphics);
  return graphics;
}

// Draws from the same corner at the same size, as masks are drawn.
void DrawPicture(REALobjectStruct* graphics, REALpictureStruct* picture, int64_t x, int64_t y, int64_t width,
                 int64_t height, int64_t sx, int64_t sy, int64_t sw, int64_t sh) {
  Note("DrawPicture");
  const FakePicture &from = Of(picture), &to = Of(graphics);
  if (x != 0 || y != 0 || sx != 0 || sy != 0 || sw != width || sh != height) return;
  for (int64_t row = 0; row < height; ++row) {
    std::memcpy(to.pixels + row * to.stride, from.pixels + row * from.stride, 4 * width);
  }
}
void* LoadObjectMethod(REALobjectStruct*, const char* declaration) {
  const bool known = std::string_view(declaration).starts_with("DrawPicture(Image as Picture, x as Integer, ");
  return known && host->options.draws ? reinterpret_cast<void*>(&DrawPicture) : nullptr;
}

template <template <typename> class Function, typename Result, typename... Arguments>
void Offer(Function<Result(Arguments...)>& function, const char* name, Result (*implementation)(Arguments...)) {
  std::destroy_at(&function);
  std::construct_at(&function, name);
  if (host->options.missing != name) offered[name] = reinterpret_cast<void*>(implementation);
}

}  // namespace

FakeHost::FakeHost(const HostOptions& wanted) : options(wanted) {
  host = this;
  IsDesktop = IsConsole = false;
  Offer(REALNewPicture, "newPicture", &NewPicture);
  Offer(REALLockObject, "REALLockObject", &LockObject);
  Offer(REALUnlockObject, "REALUnlockObject", &UnlockObject);
  Offer(REALGetPictureType, "PluginPictureGetType", &PictureType);
  Offer(REALGetClassRef, "pluginObjectType", &ClassRef);
  Offer(REALLockPictureDescription, "REALLockPictureDescription", &LockDescription);
  Offer(REALUnlockPictureDescription, "unlockPictureDescription", &UnlockDescription);
  Offer(REALPictureClearCache, "REALPictureClearCache", &ClearCache);
  Offer(REALGetPictureMask, "REALGetPictureMask", &GetMask);
  Offer(REALGetPictureGraphics, "pluginPictureGraphicsGetter", &GetGraphics);
  Offer(REALLoadObjectMethod, "REALLoadObjectMethod", &LoadObjectMethod);
  gResolver = [](const char* name) {
    const auto found = offered.find(name);
    return found == offered.end() ? nullptr : found->second;
  };
}

FakeHost::~FakeHost() {
  host = nullptr;
  offered.clear();
  gResolver = nullptr;
}

REALpictureStruct* FakeHost::MakePicture(int32_t width, int32_t height) { return NewPicture(width, height, 32); }

uint32_t BytesAt(REALpictureStruct* picture, int64_t x, int64_t y) {
  const uint8_t* b = Of(picture).pixels + y * Of(picture).stride + 4 * x;
  return static_cast<uint32_t>(b[0]) << 24 | b[1] << 16 | b[2] << 8 | b[3];
}

REALpictureStruct* MaskOf(REALpictureStruct* picture) {
  return reinterpret_cast<REALpictureStruct*>(Of(picture).mask);
}

bool FakeHost::IsBalancedWithout(std::initializer_list<REALpictureStruct*> returned) {
  for (REALpictureStruct* picture : returned) {
    if (picture) --Of(picture).references;
  }
  const auto untouched = [](const uint8_t* bytes, size_t count) {
    return std::count(bytes, bytes + count, kUntouched) == static_cast<std::ptrdiff_t>(count);
  };
  for (const auto& p : pictures) {
    const bool is_mask =
        std::any_of(pictures.begin(), pictures.end(), [&](auto& owner) { return owner->mask == p.get(); });
    if (p->references != (is_mask ? 1 : 0) || p->locks != 0) return false;
    if (!untouched(p->pixels - kMargin, kMargin) || !untouched(p->pixels + p->stride * p->height, kMargin))
      return false;
    for (int y = 0; y < p->height; ++y) {
      const size_t used = 4 * static_cast<size_t>(p->width);
      if (!untouched(p->pixels + p->stride * y + used, p->stride - used)) return false;
    }
  }
  return true;
}
