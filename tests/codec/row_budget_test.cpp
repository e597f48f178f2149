// What a stream's bytes, known or not, allow for rows; the rest is tested on whole files.

#include "codec/row_budget.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <memory>
#include <string>

namespace {

constexpr int64_t kAnyDocument = int64_t{64} << 20, kForEachByte = 16384;

// Whether a document may spend so many bytes more than any may.
bool Affords(RowBudget budget, int64_t beyond) {
  constexpr int32_t kRows = 2048, kPointer = sizeof(uint8_t*);
  const int64_t cost = kAnyDocument + beyond;
  const auto last_row = static_cast<int32_t>(cost % kRows) + kRows;
  const auto width = static_cast<int32_t>((cost - last_row) / kRows) - kPointer;
  return budget.Spend(width, kRows) && budget.Spend(last_row - kPointer, 1);
}

TEST(RowBudget, AllowsExactlySoMuchForEachByte) {
  const uint8_t bytes[3] = {};
  const struct {
    MyFILE stream;
    int64_t size;
  } rows[] = {{{nullptr, 0, 0, nullptr}, 0},
              {{nullptr, 3, 0, nullptr}, 0},
              {{bytes, 3, 0, nullptr}, 3},
              {{bytes, 3, 3, nullptr}, 3}};
  for (const auto& row : rows) {
    EXPECT_TRUE(Affords(RowBudget(&row.stream), row.size * kForEachByte)) << row.size;
    EXPECT_FALSE(Affords(RowBudget(&row.stream), row.size * kForEachByte + 1)) << row.size;
  }
}

// The bytes that a stream has are asked for whenever something is spent: a file may grow or shrink meanwhile, of a
// pipe those count that came.
TEST(RowBudget, FollowsAStreamThatChanges) {
  const std::unique_ptr<FILE, int (*)(FILE*)> file(std::tmpfile(), std::fclose);
  MyFILE stream = {nullptr, 0, 0, file.get()};
  const RowBudget budget(&stream);
  const auto afforded_bytes = [&] {
    int64_t bytes = 0;
    while (Affords(budget, (bytes + 1) * kForEachByte)) ++bytes;
    return bytes;
  };
  EXPECT_EQ(afforded_bytes(), 0);
  std::fputs("12345", file.get());
  std::rewind(file.get());
  EXPECT_EQ(afforded_bytes(), 5);
  uint8_t read[4];
  ReadBytes(&stream, read, 4);
  EXPECT_EQ(afforded_bytes(), 5);
  EXPECT_EQ(ftruncate(fileno(file.get()), 2), 0);
  EXPECT_EQ(afforded_bytes(), 4);  // read already

  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const std::unique_ptr<FILE, int (*)(FILE*)> pipe_out(fdopen(ends[0], "rb"), std::fclose);
  ASSERT_EQ(write(ends[1], "abc", 3), 3);
  MyFILE piped = {nullptr, 0, 0, pipe_out.get()};
  EXPECT_EQ(StreamSize(&piped), 0);
  EXPECT_EQ(MyGetc(&piped), 'a');
  EXPECT_EQ(StreamSize(&piped), 1);
  close(ends[1]);
  ReadBytes(&piped, read, 4);  // two are left
  EXPECT_EQ(std::string(read, read + 4), std::string("bc\0\0", 4));
  EXPECT_EQ(MyGetc(&piped), 0);
  EXPECT_EQ(StreamSize(&piped), 3);
}

}  // namespace
