// Rendering rows of indexes to 32-bit pixels, against memset of the same bytes.
//
// Both run in turn over the same memory, so that what the machine does besides meets both alike. The counter
// "of_memset" is the median of their ratios: 1 would be as fast as filling.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "picture/row_renderer.h"

namespace {

struct Image {
  int64_t width, height;
  std::vector<uint8_t> indexes, pixels;
  PixelTable table;

  Image(int64_t w, int64_t h, uint32_t colours) : width(w), height(h), indexes(w * h), pixels(4 * w * h) {
    std::minstd_rand random(5);
    table.fill(0xFF000000);
    for (uint32_t i = 0; i < colours; ++i) table[i] = 0xFF000000 | static_cast<uint32_t>(random());
    for (uint8_t& index : indexes) index = static_cast<uint8_t>((random() >> 8) % colours);
  }
};

double Seconds(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  benchmark::ClobberMemory();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// `render` renders the whole image once.
void Compare(benchmark::State& state, Image& image, const std::function<void()>& render) {
  std::vector<double> ratios;
  while (state.KeepRunning()) {
    const double fill = Seconds([&] { std::memset(image.pixels.data(), 0x55, image.pixels.size()); });
    const double rendering = Seconds(render);
    ratios.push_back(fill / rendering);
    state.SetIterationTime(rendering);
  }
  std::nth_element(ratios.begin(), ratios.begin() + ratios.size() / 2, ratios.end());
  state.counters["of_memset"] = ratios[ratios.size() / 2];
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * image.pixels.size()));
}

// As conversions do: the table is prepared once for each image.
void Render(benchmark::State& state, int64_t width, int64_t height, uint32_t colours) {
  Image image(width, height, colours);
  std::vector<const uint8_t*> from;
  std::vector<uint8_t*> to;
  for (int64_t y = 0; y < height; ++y) {
    from.push_back(&image.indexes[y * width]);
    to.push_back(&image.pixels[4 * y * width]);
  }
  Compare(state, image, [&] { RowRenderer(image.table).RenderRows(from, width, to.data()); });
}

void RenderWith(benchmark::State& state, const RowKernel& kernel, int64_t width, int64_t height, uint32_t colours) {
  Image image(width, height, colours);
  RowLookup lookup;
  lookup.pixels = image.table;
  if (!kernel.prepare(lookup)) return state.SkipWithError("not on this processor");
  Compare(state, image, [&] {
    for (int64_t y = 0; y < height; ++y) {
      kernel.render(lookup, &image.indexes[y * width], width, &image.pixels[4 * y * width]);
    }
  });
}

void RegisterAll() {
  constexpr struct { int64_t width, height; } kSizes[] = {{4096, 4096}, {1024, 768}, {100, 75}, {32, 32}};
  for (const auto& size : kSizes) {
    for (uint32_t colours : {256, 16, 2}) {
      const std::string what =
          std::to_string(size.width) + "x" + std::to_string(size.height) + "/" + std::to_string(colours) + " colours";
      benchmark::RegisterBenchmark(("render/" + what).c_str(), Render, size.width, size.height, colours)
          ->UseManualTime();
      for (const RowKernel& kernel : RowKernels()) {
        if (colours == 256 && kernel.step == 32) continue;  // it takes 16 colours at most
        if (size.width < kernel.step) continue;
        benchmark::RegisterBenchmark((std::string(kernel.name) + "/" + what).c_str(), [=, &kernel](
                                                                                          benchmark::State& state) {
          RenderWith(state, kernel, size.width, size.height, colours);
        })->UseManualTime();
      }
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  RegisterAll();
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
