#include "picture/row_renderer.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>
#include <vector>

#include "platform/compiler.h"

namespace {

// The judge: one pixel after the other.
std::vector<uint8_t> RenderSlowly(const PixelTable& table, const std::vector<uint8_t>& indexes) {
  std::vector<uint8_t> bytes;
  for (uint8_t index : indexes) {
    for (int b = 0; b < 4; ++b) bytes.push_back(static_cast<uint8_t>(table[index] >> 8 * b));
  }
  return bytes;
}

// Each table sets `colours` entries from `first` on, the others are alike.
struct TableCase {
  int first, colours;
};
constexpr TableCase kTables[] = {{0, 256}, {0, 16},   {0, 1},    {0, 0},    {0, 17},   {255, 1},
                                 {128, 1}, {240, 16}, {239, 17}, {100, 16}, {100, 17}, {250, 6}};

// How many of the tables a kernel is to take, by its name.
std::map<std::string, int> ExpectedTables() {
  const int all = std::size(kTables);
  std::map<std::string, int> tables = {{"eight a step", all}};
#if defined(GIF_X86_KERNELS)
  const bool avx2 = __builtin_cpu_supports("avx2");
  tables["eight a step, AVX2"] = avx2 ? all : 0;
  tables["planes of 16, AVX2"] = avx2 ? all - 4 : 0;  // four set more than 16 neighbours
  tables["planes of 256, AVX-512 VBMI"] =
      __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vbmi") ? all : 0;
#elif defined(GIF_NEON_KERNELS)
  tables["planes of 16, NEON"] = all - 4;
#endif
  return tables;
}

constexpr int kCounts[] = {0, 1, 7, 8, 9, 31, 32, 33, 63, 64, 65, 127, 128, 129, 1000};

TEST(RowRenderer, AllKernelsAgreeWithTheJudge) {
  std::minstd_rand generator(7);
  const auto random = [&] { return static_cast<uint32_t>(generator() * 3); };
  std::map<std::string, int> tables_taken;
  for (const TableCase& c : kTables) {
    PixelTable table;
    table.fill(random());
    for (int i = 0; i < c.colours; ++i) table[c.first + i] = random();
    for (const RowKernel& kernel : RowKernels()) {
      RowLookup lookup;
      lookup.pixels = table;
      tables_taken[kernel.name] += kernel.prepare(lookup);
    }
    for (int count : kCounts) {
      std::vector<uint8_t> indexes(count + 1);
      for (uint8_t& index : indexes) index = static_cast<uint8_t>(random() >> 8);
      indexes.erase(indexes.begin());  // the vector's own alignment would be too kind
      const std::vector<uint8_t> expected = RenderSlowly(table, indexes);
      const auto check = [&](const char* name, auto render) {
        std::vector<uint8_t> bytes(4 * count + 2, 0xEE);
        render(bytes.data() + 1);
        EXPECT_EQ(bytes.front(), 0xEE);
        EXPECT_EQ(bytes.back(), 0xEE);
        EXPECT_TRUE(std::equal(expected.begin(), expected.end(), bytes.begin() + 1))
            << name << ", " << c.colours << " colours from " << c.first << ", " << count << " pixels";
      };
      for (const RowKernel& kernel : RowKernels()) {
        RowLookup lookup;
        lookup.pixels = table;
        if (count < kernel.step || !kernel.prepare(lookup)) continue;
        check(kernel.name, [&](uint8_t* out) { kernel.render(lookup, indexes.data(), count, out); });
      }
      check("chosen", [&](uint8_t* out) { RowRenderer(table).Render(indexes.data(), count, out); });
    }
  }
  EXPECT_EQ(tables_taken, ExpectedTables());
}

// Rows of every width that is narrow for some kernel, each in a place of its own, with bytes around it that stay.
TEST(RowRenderer, RowsTogetherAreRowsOneByOne) {
  std::minstd_rand random(9);
  PixelTable table;
  for (uint32_t& pixel : table) pixel = static_cast<uint32_t>(random());
  for (size_t count = 1; count <= 65; ++count) {
    for (const size_t height : {1, 2, 5, 16}) {
      std::vector<std::vector<uint8_t>> rows(height, std::vector<uint8_t>(count));
      std::vector<std::vector<uint8_t>> rendered(height, std::vector<uint8_t>(4 * count + 2, 0xEE));
      std::vector<const uint8_t*> from;
      std::vector<uint8_t*> to;
      for (size_t y = 0; y < height; ++y) {
        for (uint8_t& index : rows[y]) index = static_cast<uint8_t>(random() >> 8);
        from.push_back(rows[y].data());
        to.push_back(rendered[y].data() + 1);
      }
      RowRenderer(table).RenderRows(from, static_cast<int64_t>(count), to.data());
      for (size_t y = 0; y < height; ++y) {
        std::vector<uint8_t> expected = RenderSlowly(table, rows[y]);
        expected.insert(expected.begin(), 0xEE);
        expected.push_back(0xEE);
        EXPECT_EQ(rendered[y], expected) << "row " << y << " of " << height << ", " << count << " pixels";
      }
    }
  }
}

}  // namespace
