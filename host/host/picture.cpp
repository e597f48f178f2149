#include "host/host/picture.h"

#include <algorithm>

#include "host/core/fault.h"
#include "host/core/text.h"

namespace host {

bool Picture::Create(const HostOptions& options, int64_t width, int64_t height) {
  constexpr int64_t kLongestSide = 32767;
  if (width < 1 || width > kLongestSide || height < 1 || height > kLongestSide || locks_ > 0) return false;
  auto made = MakePixels(options, static_cast<int>(width), static_cast<int>(height));
  if (!made) return false;
  pixels_ = std::move(made);
  width_ = static_cast<int>(width);
  height_ = static_cast<int>(height);
  return true;
}

const Ref<Picture>& Picture::MakeMask(Host& host) {
  if (!mask_) SetMask(NewPicture(host, width_, height_));
  return mask_;
}

bool Picture::SetMask(Ref<Picture> mask) {
  if (mask && (mask->mask_ || mask.get() == this || masked_ > 0)) return false;
  if (mask_) --mask_->masked_;
  if (mask) ++mask->masked_;
  mask_ = std::move(mask);
  return true;
}

void Picture::ReadTransparency(int x, int y, std::span<uint32_t> to) const {
  const size_t masked =
      mask_ && mask_->Contains(x, y) ? std::min(to.size(), static_cast<size_t>(mask_->width_ - x)) : 0;
  if (masked > 0) mask_->pixels().Read(x, y, to.first(masked));
  for (uint32_t& transparency : to.first(masked)) transparency &= 0xFF;
  std::ranges::fill(to.subspan(masked), 0);
}

bool Picture::LockDescription(uint32_t kind, REALpictureDescription& description) {
  if (!pixels_ || kind != pixels_->description_kind()) return false;
  ++locks_;
  description = {kind, pixels_->platform_object(), width_, height_, {}};
  return true;
}

void Picture::UnlockDescription() {
  if (locks_ == 0) Fault(Text("the description of ", Describe(), " is not locked"));
  --locks_;
  if (!pixels_->IsIntact()) Fault(Text("something was written behind a row of ", Describe()));
}

void Picture::BeforeDeath() {
  if (locks_ > 0) Fault(Text(Describe(), " dies while its description is locked (", locks_, " times)"));
  SetMask({});
}

Ref<Picture> NewPicture(Host& host, int64_t width, int64_t height) {
  Ref<Picture> made = host.Make<Picture>("Picture");
  return made->Create(host.options(), width, height) ? made : Ref<Picture>();
}

Ref<Graphics> NewGraphics(Host& host, Ref<Picture> picture) {
  Ref<Graphics> made = host.Make<Graphics>("Graphics");
  made->picture = std::move(picture);
  return made;
}

}  // namespace host
