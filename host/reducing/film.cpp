#include "host/reducing/film.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "host/reducing/code_strings.h"
#include "host/reducing/quality.h"

namespace host {
namespace {

constexpr int kKeep = 1;
constexpr int kRestoreBackground = 2;
constexpr int kRestorePrevious = 3;
constexpr size_t kMostColors = 256;

void CopyPart(const Rect& area, const Canvas& from, Canvas& to) {
  for (int y = area.top; y < area.bottom; ++y)
    std::copy(from.row(y) + area.left, from.row(y) + area.right, to.row(y) + area.left);
}

void ClearPart(const Rect& area, Canvas& canvas) {
  for (int y = area.top; y < area.bottom; ++y)
    std::fill(canvas.row(y) + area.left, canvas.row(y) + area.right, kClear);
}

Rect Difference(const Canvas& a, const Canvas& b, const Rect& within) {
  return Bounds(within, a.width, [&](size_t at) { return a.pixels[at] != b.pixels[at]; });
}

constexpr int64_t kImpossible = INT64_MAX;

// About how many bytes it takes to show `next` over that, which it differs from only within a rectangle; kImpossible
// where it would have to take something away.
template <class Below>
int64_t EstimatedBytes(const Canvas& next, const Rect& within, Below below) {
  constexpr uint8_t kSame = 255;
  constexpr int kCodeSize = 8;
  const Rect place = Bounds(within, next.width, [&](size_t at) { return next.pixels[at] != below(at); });
  std::vector<uint8_t> pixels;
  pixels.reserve(place.size());
  for (int y = place.top; y < place.bottom; ++y) {
    const size_t row = static_cast<size_t>(y) * static_cast<size_t>(next.width);
    for (size_t at = row + static_cast<size_t>(place.left); at < row + static_cast<size_t>(place.right); ++at) {
      const uint32_t color = next.pixels[at];
      if (color == below(at)) {
        pixels.push_back(kSame);
        continue;
      }
      if (color == kClear) return kImpossible;
      pixels.push_back(static_cast<uint8_t>((color * 0x9E3779B1u >> 16) % kSame));
    }
  }
  return CountBytes(pixels, kCodeSize);
}

template <class Below>
size_t CountChanged(const Canvas& next, const Rect& within, Below below) {
  size_t count = 0;
  for (int y = within.top; y < within.bottom; ++y) {
    const size_t row = static_cast<size_t>(y) * static_cast<size_t>(next.width);
    for (size_t at = row + static_cast<size_t>(within.left); at < row + static_cast<size_t>(within.right); ++at) {
      count += next.pixels[at] != below(at) ? 1 : 0;
    }
  }
  return count;
}

}  // namespace

void Frames::Add(const Canvas& canvas, Canvas& before) {
  Change change{changes_.empty() ? canvas.all() : Difference(canvas, before, canvas.all()), {}};
  change.pixels.reserve(change.area.size());
  for (int y = change.area.top; y < change.area.bottom; ++y) {
    change.pixels.insert(change.pixels.end(), canvas.row(y) + change.area.left, canvas.row(y) + change.area.right);
  }
  CopyPart(change.area, canvas, before);
  changes_.push_back(std::move(change));
}

void Frames::Apply(size_t frame, Canvas& to) const {
  const Change& change = changes_[frame];
  const uint32_t* from = change.pixels.data();
  for (int y = change.area.top; y < change.area.bottom; ++y, from += change.area.width()) {
    std::copy(from, from + change.area.width(), to.row(y) + change.area.left);
  }
}

// --- Drawing ---

Film::Film(int width, int height)
    : canvas_{width, height, std::vector<uint32_t>(static_cast<size_t>(width) * static_cast<size_t>(height), kClear)},
      kept_(canvas_) {}

Canvas Film::Blank() const {
  Canvas blank{canvas_.width, canvas_.height, {}};
  blank.pixels.assign(canvas_.pixels.size(), kClear);
  return blank;
}

void Film::Dispose() {
  const Rect area = last_.place.Within(canvas_.all());
  if (last_.disposal == kRestoreBackground) ClearPart(area, canvas_);
  if (last_.disposal == kRestorePrevious && !area.empty()) CopyPart(area, before_last_, canvas_);
}

bool Film::Draw(const IndexedImage& image) {
  Dispose();
  last_ = {image.place, {}, {}, -1, image.disposal};
  if (image.disposal == kRestorePrevious) before_last_ = canvas_;
  const Rect area = image.place.Within(canvas_.all());
  for (int y = area.top; y < area.bottom; ++y) {
    const uint8_t* from = image.pixels.data() +
                          static_cast<size_t>(y - image.place.top) * static_cast<size_t>(image.place.width()) +
                          (area.left - image.place.left);
    uint32_t* to = canvas_.row(y) + area.left;
    for (int x = area.left; x < area.right; ++x, ++from, ++to) {
      if (*from == image.transparent) continue;
      if (*from >= image.colors.size()) return false;
      *to = image.colors[*from];
    }
  }
  return true;
}

bool Film::Changed() const { return frames_.count() == 0 || canvas_.pixels != kept_.pixels; }

void Film::Keep() {
  frames_.Add(canvas_, kept_);
  for (int y = 0; y < canvas_.height; ++y) {
    const uint32_t* row = canvas_.row(y);
    colors_.AddRow(row, static_cast<size_t>(canvas_.width));
    has_clear_ = has_clear_ || std::find(row, row + canvas_.width, kClear) != row + canvas_.width;
  }
}

// --- Planning ---

// Where pixels of one frame are gone in the next.
Rect Film::Cleared(const Canvas& now, const Canvas& next, const Rect& within) const {
  if (!has_clear_) return {};
  return Bounds(within, now.width, [&](size_t at) { return next.pixels[at] == kClear && now.pixels[at] != kClear; });
}

// So that the next frame takes the fewest bytes. Where fewer pixels change when the image stays, it does.
void Film::ChooseDisposal(const Canvas& now, const Canvas& next, const Canvas& below, const Rect& changed,
                          Step& step) const {
  const auto kept = [&](size_t at) { return now.pixels[at]; };
  const auto before = [&](size_t at) { return below.pixels[at]; };
  const Rect both = changed.With(step.place);
  step.disposal = kKeep;
  if (!has_clear_ && CountChanged(next, both, before) >= CountChanged(next, changed, kept)) return;
  int64_t least = EstimatedBytes(next, changed, kept);
  const int64_t previous = EstimatedBytes(next, both, before);
  if (previous < least) {
    step.disposal = kRestorePrevious;
    least = previous;
  }
  if (!has_clear_) return;
  const Rect cleared = step.place.With(Cleared(now, next, changed));
  const auto inside = [&](size_t at) {
    const int x = static_cast<int>(at % static_cast<size_t>(now.width));
    const int y = static_cast<int>(at / static_cast<size_t>(now.width));
    return x >= cleared.left && x < cleared.right && y >= cleared.top && y < cleared.bottom;
  };
  const int64_t background =
      EstimatedBytes(next, changed.With(cleared), [&](size_t at) { return inside(at) ? kClear : now.pixels[at]; });
  if (background >= least) return;
  step.disposal = kRestoreBackground;
  step.place = cleared;
}

bool Film::PlanSteps(bool gather_colors) {
  Canvas now = Blank();
  Canvas next = Blank();
  Canvas below = Blank();
  Rect dirty;  // where what is below may differ from the frame before
  steps_.resize(frames_.count());
  if (!steps_.empty()) frames_.Apply(0, next);
  for (size_t i = 0; i < steps_.size(); ++i) {
    Step& step = steps_[i];
    frames_.Apply(i, now);
    step.place = Difference(now, below, dirty.With(frames_.changed(i)));
    if (i + 1 < steps_.size()) {
      frames_.Apply(i + 1, next);
      ChooseDisposal(now, next, below, frames_.changed(i + 1), step);
    }
    if (gather_colors) {
      ColorCounts colors(kMostColors - 1);
      for (int y = step.place.top; y < step.place.bottom; ++y) {
        for (int x = step.place.left; x < step.place.right; ++x) {
          const uint32_t color = now.row(y)[x];
          if (color != kClear && color != below.row(y)[x]) colors.Add(color);
        }
      }
      if (colors.overflowed()) return false;
      step.colors = colors.MostFrequentFirst();
    }
    dirty = step.disposal == kKeep ? Rect{} : step.place;
    if (step.disposal == kKeep) CopyPart(step.place, now, below);
    if (step.disposal == kRestoreBackground) {
      CopyPart(step.place, now, below);
      ClearPart(step.place, below);
    }
  }
  return true;
}

// The table of all images gets the colours of those that add the fewest to it, while there is room.
void Film::ShareTable() {
  std::unordered_map<uint32_t, std::vector<size_t>> users;
  std::vector<size_t> missing(steps_.size());
  for (size_t i = 0; i < steps_.size(); ++i) {
    missing[i] = steps_[i].colors.size();
    for (const uint32_t color : steps_[i].colors) users[color].push_back(i);
    steps_[i].has_own_table = true;
  }
  std::vector<uint32_t> shared;
  for (;;) {
    size_t best = steps_.size();
    for (size_t i = 0; i < steps_.size(); ++i) {
      if (steps_[i].has_own_table && (best == steps_.size() || missing[i] < missing[best])) best = i;
    }
    if (best == steps_.size() || shared.size() + missing[best] >= kMostColors) break;
    steps_[best].has_own_table = false;
    for (const uint32_t color : steps_[best].colors) {
      std::vector<size_t>& those = users[color];
      if (those.empty()) continue;
      shared.push_back(color);
      for (const size_t user : those) --missing[user];
      those.clear();
    }
  }
  table_ = TableWithRoom(std::move(shared));
}

bool Film::Plan(const Wishes& wishes) {
  wishes_ = wishes;
  const bool fits = ColorsFit();
  if (!PlanSteps(wishes.exact && !fits)) return false;
  if (fits) {
    std::vector<uint32_t> all = colors_.Choose(kMostColors);
    table_ = has_clear_ ? TableWithRoom(std::move(all)) : Table(std::move(all));
  } else if (wishes.exact) {
    ShareTable();
  } else if (wishes.tables != Tables::kOwn) {
    table_ = TableWithRoom(ChosenFrom(colors_));
    nearest_.emplace(table_.colors());
  }
  wishes_.exact = wishes.exact || fits;
  source_ = below_ = Blank();
  wanted_ = source_below_ = source_;
  return true;
}

// Leaves an index for what is transparent.
std::vector<uint32_t> Film::ChosenFrom(const Quantiser& colors) const {
  const auto most = static_cast<size_t>(wishes_.most_colors - 1);
  if (wishes_.quality > 0) {
    if (auto chosen = ChooseByQuality(colors, most, wishes_.quality)) return *std::move(chosen);
  }
  return colors.Choose(most);
}

// A table with an index to spare: for pixels that must be transparent, or have a colour that is only below.
Table Film::TableWithRoom(std::vector<uint32_t> colors) {
  const bool full = colors.size() >= 2 && (colors.size() & (colors.size() - 1)) == 0;
  if (full) colors.push_back(0);
  return Table(std::move(colors));
}

// Whether one table has room for all colours as they are.
bool Film::ColorsFit() const {
  return colors_.HasAtMost(static_cast<size_t>(wishes_.most_colors - (has_clear_ ? 1 : 0)));
}

// --- Storing ---

Table Film::OwnTable(const Step& step) const {
  if (wishes_.exact) return TableWithRoom(step.colors);
  Quantiser colors;
  for (int y = step.place.top; y < step.place.bottom; ++y) {
    for (int x = step.place.left; x < step.place.right; ++x) {
      if (source_.row(y)[x] != kClear && source_.row(y)[x] != source_below_.row(y)[x]) colors.Add(source_.row(y)[x]);
    }
  }
  std::vector<uint32_t> chosen = ChosenFrom(colors);
  if (chosen.empty()) chosen.push_back(0);  // an image has some table even where it shows nothing new
  return TableWithRoom(std::move(chosen));
}

// Whether a table of its own makes a frame look better enough to be worth its bytes.
bool Film::IsBetterOwn(const Step& step, const Table& own) {
  constexpr double kFactor = 1.4;    // 1.5 dB
  constexpr double kInvisible = 12;  // squared, for a pixel
  NearestColor own_nearest(own.colors());
  double shared_error = 0;
  double own_error = 0;
  double pixels = 0;
  for (int y = step.place.top; y < step.place.bottom; ++y) {
    for (int x = step.place.left; x < step.place.right; ++x) {
      const uint32_t source = source_.row(y)[x];
      if (source == kClear || source == source_below_.row(y)[x]) continue;
      shared_error += Distance(source, table_.colors()[static_cast<size_t>(nearest_->Find(source))]);
      own_error += Distance(source, own.colors()[static_cast<size_t>(own_nearest.Find(source))]);
      ++pixels;
    }
  }
  return shared_error > kInvisible * pixels && shared_error > kFactor * own_error;
}

std::optional<StoredImage> Film::Next() {
  if (next_ == steps_.size()) return std::nullopt;
  const Step& step = steps_[next_];
  frames_.Apply(next_++, source_);
  Table own;
  bool has_own = step.has_own_table || (!wishes_.exact && wishes_.tables != Tables::kOne);
  if (has_own) own = OwnTable(step);
  if (!wishes_.exact && wishes_.tables == Tables::kAuto) has_own = IsBetterOwn(step, own);
  const Table& table = has_own ? own : table_;
  if (wishes_.exact) {
    CopyPart(step.place, source_, wanted_);
  } else if (!table.colors().empty()) {
    std::optional<NearestColor> own_nearest;
    if (has_own) own_nearest.emplace(own.colors());
    Reduce({&source_, &source_below_, &below_, step.place}, table.colors(), has_own ? *own_nearest : *nearest_,
           wishes_.dithering, wanted_);
  }
  // What is off by more than a code is worth is looked at again.
  const int tolerance = CodeCost(wishes_.tolerance);
  Task task{&below_, &wanted_, step.place, &source_, wishes_.tolerance};
  if (step.disposal != kRestoreBackground) {
    task.place = Bounds(step.place, below_.width, [&](size_t at) {
      if (wanted_.pixels[at] == below_.pixels[at]) return false;
      return tolerance == 0 || below_.pixels[at] == kClear ||
             Distance(below_.pixels[at], source_.pixels[at]) > tolerance;
    });
  }
  if (task.place.empty()) {
    task.place = {0, 0, 1, 1};
    CopyPart(task.place, below_, wanted_);
  }
  StoredImage image = has_own ? CodeImage(task, own) : CodeSmallest(task, table);
  if (has_own) image.own_table = own;
  image.disposal = step.disposal;
  if (step.disposal == kRestoreBackground) {
    ClearPart(step.place, below_);
    ClearPart(step.place, source_below_);
  } else if (step.disposal == kKeep) {
    const std::vector<uint32_t>& colors =
        image.own_table.colors().empty() ? table.colors() : image.own_table.colors();
    const uint8_t* pixel = image.pixels.data();
    for (int y = task.place.top; y < task.place.bottom; ++y) {
      for (int x = task.place.left; x < task.place.right; ++x, ++pixel) {
        if (*pixel != image.transparent) below_.row(y)[x] = colors[*pixel];
      }
    }
    CopyPart(step.place, source_, source_below_);
  }
  return image;
}

}  // namespace host
