#pragma once

// A host of pictures and nothing else, in the test's own process: pixel memory of both kinds, counted references, and
// what no real host does. It cannot draw. One at a time; making one forgets what the plugin found out before.

#include <gd.h>

#include <algorithm>
#include <deque>
#include <functional>
#include <initializer_list>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "picture/picture_editor.h"
#include "platform/core_graphics.h"
#include "plugin/host_functions.h"

struct HostOptions {
  bool contexts = true;          // describes pictures as bitmap contexts, else as libgd images
  std::string application = {};  // the application class that it has
  uint32_t alpha_info = 1;       // of contexts
  size_t padding = 0;            // bytes after each row of a context
  int descriptions = 1000;       // how many times a description is given
  std::function<void(REALpictureDescription&)> spoil = {};  // changes each description before it is given
};

struct FakePicture {
  int references = 1, locks = 0;
  size_t width, height, stride;  // as made, whatever the records below are made to say
  std::vector<uint8_t> memory;
  std::vector<int*> rows = {};
  CGContext context = {};
  gdImage image = {};
  FakePicture* mask = nullptr;

  uint8_t* Pixel(int64_t x, int64_t y) { return memory.data() + kMargin + y * stride + 4 * x; }
  static constexpr size_t kMargin = 64;  // bytes around the pixels
};

inline constexpr uint8_t kUntouched = 0xEE;

template <typename Handle>
FakePicture& Of(Handle* handle) {
  return *reinterpret_cast<FakePicture*>(handle);
}

class FakeHost {
 public:
  explicit FakeHost(HostOptions wanted) : options(std::move(wanted)) {
    current_ = this;
    IsDesktop = IsConsole = false;
    Offer(REALNewPicture, "newPicture", &New);
    Offer(
        REALLockObject, "REALLockObject", +[](REALobjectStruct* object) { ++Of(object).references; });
    Offer(
        REALUnlockObject, "REALUnlockObject", +[](REALobjectStruct* object) { --Of(object).references; });
    Offer(REALLockPictureDescription, "REALLockPictureDescription", &Describe);
    Offer(
        REALGetClassRef, "pluginObjectType",
        +[](const char* name) -> void* { return current_->options.application == name ? current_ : nullptr; });
    Offer(
        REALUnlockPictureDescription, "unlockPictureDescription", +[](REALpictureStruct* picture) {
          current_->calls += "unlock ";
          --Of(picture).locks;
        });
    Offer(
        REALPictureClearCache, "REALPictureClearCache", +[](REALpictureStruct*) { current_->calls += "clear "; });
    Offer(REALGetPictureMask, "REALGetPictureMask", &GetMask);
    gResolver = [](const char* name) -> void* {
      const auto found = current_->offered_.find(name);
      return found == current_->offered_.end() ? nullptr : found->second;
    };
  }
  ~FakeHost() { gResolver = nullptr; }

  // Gives the test's own references back (null has none); then nothing may be left: no reference, no lock, no write
  // beside the pixels.
  bool IsBalancedWithout(std::initializer_list<REALpictureStruct*> returned) {
    for (REALpictureStruct* picture : returned) {
      if (picture) --Of(picture).references;
    }
    for (FakePicture& p : pictures) {
      if (p.mask) --p.mask->references;
    }
    return std::all_of(pictures.begin(), pictures.end(), [](FakePicture& p) {
      size_t beside = 0;
      for (size_t y = 0; y < p.height; ++y) beside += Untouched(p.Pixel(p.width, y), p.Pixel(0, y + 1));
      beside += Untouched(p.memory.data(), p.Pixel(0, 0)) +
                Untouched(p.Pixel(0, p.height), p.memory.data() + p.memory.size());
      return p.references == 0 && p.locks == 0 && beside == p.memory.size() - 4 * p.width * p.height;
    });
  }

  HostOptions options;
  std::string calls;  // of the functions that make and open pictures, in order
  std::deque<FakePicture> pictures;

 private:
  template <template <typename> class Function, typename Result, typename... Arguments>
  void Offer(Function<Result(Arguments...)>& function, const char* name, Result (*implementation)(Arguments...)) {
    std::destroy_at(&function);
    std::construct_at(&function, name);
    offered_[name] = reinterpret_cast<void*>(implementation);
  }
  static size_t Untouched(const uint8_t* from, const uint8_t* to) { return std::count(from, to, kUntouched); }

  static REALpictureStruct* New(int32_t width, int32_t height, int32_t) {
    const HostOptions& o = current_->options;
    current_->calls += "new ";
    const size_t w = width, h = height, stride = 4 * w + o.padding;
    FakePicture& p = current_->pictures.emplace_back(
        FakePicture{.width = w,
                    .height = h,
                    .stride = stride,
                    .memory = std::vector<uint8_t>(stride * h + 2 * FakePicture::kMargin, kUntouched)});
    p.context = {p.Pixel(0, 0), w, h, stride, 32, o.alpha_info};
    for (size_t y = 0; y < h; ++y) p.rows.push_back(static_cast<int*>(static_cast<void*>(p.Pixel(0, y))));
    p.image.sx = width;
    p.image.sy = height;
    p.image.trueColor = 1;
    p.image.tpixels = p.rows.data();
    return reinterpret_cast<REALpictureStruct*>(&p);
  }

  static HostBoolean Describe(REALpictureStruct* handle, REALpictureDescription* description, int32_t kind) {
    HostOptions& o = current_->options;
    FakePicture& p = Of(handle);
    const bool context = kind == kPictureKindCGBitmapContext;
    current_->calls += context ? "context " : "image ";
    if (context != o.contexts || o.descriptions-- <= 0) return 0;
    void* object = context ? static_cast<void*>(&p.context) : &p.image;
    *description = {static_cast<uint32_t>(kind), object, p.image.sx, p.image.sy, {}};
    if (o.spoil) o.spoil(*description);
    ++p.locks;
    return 1;
  }

  static REALpictureStruct* GetMask(REALpictureStruct* handle, int32_t) {
    FakePicture& p = Of(handle);
    if (!p.mask) p.mask = &Of(New(p.image.sx, p.image.sy, 32));
    ++p.mask->references;
    return reinterpret_cast<REALpictureStruct*>(p.mask);
  }

  static inline FakeHost* current_ = nullptr;
  std::map<std::string, void*> offered_;
};

// The pixel's four bytes as they lie in memory, first byte highest.
inline uint32_t BytesAt(REALpictureStruct* picture, int64_t x, int64_t y) {
  const uint8_t* b = Of(picture).Pixel(x, y);
  return static_cast<uint32_t>(b[0]) << 24 | b[1] << 16 | b[2] << 8 | b[3];
}

inline CGContext& Context(REALpictureDescription& d) { return *static_cast<CGContextRef>(d.platform_object); }
inline gdImage& Image(REALpictureDescription& d) { return *static_cast<gdImage*>(d.platform_object); }
