#pragma once

// libgd's functions, by its names. The library, which brings forty others, is loaded when the first of them is
// called: most scripts want none. Each throws std::runtime_error where the library is missing.

#include <gd.h>
#include <gdfonts.h>

namespace host {

void* FindGdFunction(const char* name);

template <class Function>
class GdFunction;
template <class Result, class... Arguments>
class GdFunction<Result(Arguments...)> {
 public:
  explicit GdFunction(const char* name) : name_(name) {}
  Result operator()(Arguments... arguments) {
    if (function_ == nullptr) function_ = reinterpret_cast<Result (*)(Arguments...)>(FindGdFunction(name_));
    return function_(arguments...);
  }

 private:
  const char* name_;
  Result (*function_)(Arguments...) = nullptr;
};

namespace gd {

// clang-format off
inline GdFunction<decltype(gdFTUseFontConfig)>              FTUseFontConfig{"gdFTUseFontConfig"};
inline GdFunction<decltype(gdFontGetSmall)>                 FontGetSmall{"gdFontGetSmall"};
inline GdFunction<decltype(gdFree)>                         Free{"gdFree"};
inline GdFunction<decltype(gdImageAlphaBlending)>           ImageAlphaBlending{"gdImageAlphaBlending"};
inline GdFunction<decltype(gdImageColorAllocateAlpha)>      ImageColorAllocateAlpha{"gdImageColorAllocateAlpha"};
inline GdFunction<decltype(gdImageCopyResampled)>           ImageCopyResampled{"gdImageCopyResampled"};
inline GdFunction<decltype(gdImageCreate)>                  ImageCreate{"gdImageCreate"};
inline GdFunction<decltype(gdImageCreateFromPng)>           ImageCreateFromPng{"gdImageCreateFromPng"};
inline GdFunction<decltype(gdImageCreateTrueColor)>         ImageCreateTrueColor{"gdImageCreateTrueColor"};
inline GdFunction<decltype(gdImageDestroy)>                 ImageDestroy{"gdImageDestroy"};
inline GdFunction<decltype(gdImageGetTrueColorPixel)>       ImageGetTrueColorPixel{"gdImageGetTrueColorPixel"};
inline GdFunction<decltype(gdImagePngPtrEx)>                ImagePngPtrEx{"gdImagePngPtrEx"};
inline GdFunction<decltype(gdImageSaveAlpha)>               ImageSaveAlpha{"gdImageSaveAlpha"};
inline GdFunction<decltype(gdImageStringFTEx)>              ImageStringFTEx{"gdImageStringFTEx"};
// clang-format on

}  // namespace gd
}  // namespace host
