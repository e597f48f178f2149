#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "host/reducing/canvas.h"
#include "host/reducing/dithering.h"
#include "host/reducing/image_coder.h"
#include "host/reducing/quantiser.h"

namespace host {

// Whole screens one after another, each kept as the part in which it differs from the one before.
class Frames {
 public:
  size_t count() const { return changes_.size(); }
  // Adds what is in `canvas` and brings `before`, the last one added, to that state.
  void Add(const Canvas& canvas, Canvas& before);
  const Rect& changed(size_t frame) const { return changes_[frame].area; }
  void Apply(size_t frame, Canvas& to) const;  // to the state of the frame before

 private:
  struct Change {
    Rect area;
    std::vector<uint32_t> pixels;
  };
  std::vector<Change> changes_;
};

// An image of indexes, and what becomes of it: GIF89a, section 23.
struct IndexedImage {
  Rect place;                       // may reach beyond the screen
  std::span<const uint8_t> pixels;  // place.size() of them
  std::span<const uint32_t> colors;
  int transparent = -1;
  int disposal = 0;
};

enum class Tables { kOne, kOwn, kAuto };

struct Wishes {
  int most_colors = 256;  // of each table, the transparent index among them
  bool exact = false;     // colours stay as they are, with as many tables as that takes
  Tables tables = Tables::kOne;
  Dithering dithering = Dithering::kNone;
  int tolerance = 0;  // how far colours may be from the right ones where that makes the file smaller
  int quality =
      0;  // 1 to 100: no more colours than that takes, where the library for it is built in; 0: as many as can be
};

// An animation: drawn frame by frame, then stored as images that show it again from few bytes.
class Film {
 public:
  Film(int width, int height);

  // The screen as it is being drawn; nothing is shown at first. Drawing an image disposes of the one before it.
  Canvas& canvas() { return canvas_; }
  const Canvas& canvas() const { return canvas_; }
  bool Draw(const IndexedImage& image);  // false, half drawn, for an index beyond the colours
  bool Changed() const;                  // since the last Keep
  void Keep();                           // what is shown now is a frame
  size_t count() const { return frames_.count(); }

  // Once all frames are there. False when their colours are to be exact and cannot be.
  bool Plan(const Wishes& wishes);
  // Then: the table of all images that have none of their own, and the image of each frame in turn.
  const Table& table() const { return table_; }
  std::optional<StoredImage> Next();

 private:
  struct Step {
    Rect place;  // where the frame differs from what is below
    int disposal = 1;
    std::vector<uint32_t> colors;  // there; gathered only where one table may not be enough
    bool has_own_table = false;
  };
  Canvas Blank() const;
  void Dispose();
  Rect Cleared(const Canvas& now, const Canvas& next, const Rect& within) const;
  void ChooseDisposal(const Canvas& now, const Canvas& next, const Canvas& below, const Rect& changed,
                      Step& step) const;
  bool PlanSteps(bool gather_colors);
  void ShareTable();
  bool ColorsFit() const;
  std::vector<uint32_t> ChosenFrom(const Quantiser& colors) const;
  static Table TableWithRoom(std::vector<uint32_t> colors);
  Table OwnTable(const Step& step) const;
  bool IsBetterOwn(const Step& step, const Table& own);

  Canvas canvas_;
  IndexedImage last_;   // its place and disposal: still to be disposed of
  Canvas before_last_;  // what was shown before it
  Canvas kept_;         // the last frame
  Frames frames_;
  Quantiser colors_;        // of all frames
  bool has_clear_ = false;  // some frame does not cover the screen

  Wishes wishes_;
  Table table_;
  std::optional<NearestColor> nearest_;
  std::vector<Step> steps_;

  size_t next_ = 0;
  Canvas source_;        // the frame as it was drawn
  Canvas source_below_;  // what the pixels below were made from
  Canvas below_;
  Canvas wanted_;
};

}  // namespace host
