#include "codec/document.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "codec/building.h"
#include "tests/support/failing_allocation.h"

namespace {

TEST(Document, NewNeedsThreeRecords) {
  for (int64_t failing = 1; failing <= 3; ++failing) {
    FailAllocation(failing);
    EXPECT_EQ(NewGif(), nullptr) << failing;
  }
  FailAllocation(4);
  Gif* gif = NewGif();
  EXPECT_EQ(AllocationCount(), 3);
  FailAllocation(0);
  DeleteGif(gif);
}

// Where the rows of an image lie in the file, by GIF89a, appendix E.
TEST(Document, RowsStandInFileOrderAndAreFoundInDisplayOrder) {
  const struct {
    int32_t width, height, interlace;
    std::vector<size_t> file_order;  // of the display rows; empty: no pixels
  } cases[] = {
      {3, 4, 0, {0, 1, 2, 3}},
      {3, 1, 1, {0}},
      {2, 2, 1, {0, 1}},
      {1, 3, 1, {0, 2, 1}},
      {7, 5, 1, {0, 4, 2, 1, 3}},
      {5, 17, 1, {0, 8, 16, 4, 12, 2, 6, 10, 14, 1, 3, 5, 7, 9, 11, 13, 15}},
      {0, 3, 0, {}},
      {2, 0, 0, {}},
      {2, -2, 0, {}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.height);
    GifBlock* block = NewRecord<GifBlock>();
    GifPicture* picture = block->picture = NewPicture();
    picture->width = c.width;
    picture->height = c.height;
    picture->interlace = c.interlace;
    for (int64_t failing = 1; failing <= 2 && !c.file_order.empty(); ++failing) {
      FailAllocation(failing);
      EXPECT_FALSE(MakeRows(picture));
      EXPECT_EQ(picture->data, nullptr);
    }
    FailAllocation(0);
    ASSERT_TRUE(MakeRows(picture));
    EXPECT_EQ(picture->data != nullptr, c.height > 0);
    EXPECT_EQ(picture->pixels != nullptr, !c.file_order.empty());
    for (size_t i = 0; i < c.file_order.size(); ++i) {
      const uint8_t* row = picture->data[c.file_order[i]];
      EXPECT_EQ(row, picture->pixels + i * static_cast<size_t>(c.width));
      EXPECT_EQ(std::count(row, row + c.width, 0), c.width);
    }
    for (int32_t y = 0; y < c.height && c.width == 0; ++y) EXPECT_EQ(picture->data[y], nullptr);
    DeleteGifBlock(block);
  }
}

}  // namespace
