#include "bench/growth.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "bench/codecs.h"
#include "bench/growth_plot.h"
#include "bench/turns.h"
#include "codec/format.h"
#include "codec/memory.h"
#include "codec/writer.h"

namespace {

Bytes Header() {
  const char* const screen = "GIF89a\x20\0\x20\0\0\0\0";
  return Bytes(screen, screen + 13);
}

// So many comments, each of one sub-block.
Bytes Comments(int64_t count) {
  Bytes file = Header();
  for (int64_t i = 0; i < count; ++i) file.insert(file.end(), {0x21, 0xFE, 2, 'h', 'i', 0});
  file.push_back(kTrailer);
  return file;
}

// The images of a file, so many times.
Bytes Repeated(const Bytes& file, int64_t count) {
  const size_t start = 13 + 3 * (size_t{2} << (file[10] & 7));
  Bytes repeated(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(start));
  for (int64_t i = 0; i < count; ++i) {
    repeated.insert(repeated.end(), file.begin() + static_cast<std::ptrdiff_t>(start), file.end() - 1);
  }
  repeated.push_back(kTrailer);
  return repeated;
}

// A square image of one colour, of that many times 1024 × 1024 pixels.
Bytes Plain(int64_t times) {
  const auto side = static_cast<int32_t>(1024 * std::lround(std::sqrt(times)));
  const std::unique_ptr<Gif, void (*)(Gif*)> gif(NewGif(), DeleteGif);
  gif->screen->cmap_depth = 8;
  GrowList(gif->blocks, 0);
  GifBlock* block = gif->blocks[gif->count++] = NewGifBlock(true, false);
  block->intro = kImageIntroducer;
  block->picture->width = block->picture->height = side;
  char* bytes = nullptr;
  size_t size = 0;
  FILE* memory = open_memstream(&bytes, &size);
  MyFILE stream = {nullptr, 0, 0, memory};
  WriteGif(&stream, gif.get());
  std::fclose(memory);
  Bytes file(bytes, bytes + size);
  std::free(bytes);
  return file;
}

template <typename Make>
Growth Grow(const char* name, std::initializer_list<int64_t> sizes, Make make, int64_t each = 1) {
  Growth growth{name, {}};
  std::printf("| %s |", name);
  for (const int64_t size : sizes) {
    const Bytes file = make(size);
    const double seconds = MedianSeconds(MeasureInTurns({Codecs()[0].decode(file)}, 3), 0);
    growth.points.emplace_back(static_cast<double>(size * each), seconds);
    std::printf(" %.3g: %.3g s |", static_cast<double>(size * each), seconds);
    std::fflush(stdout);
  }
  std::printf("\n");
  return growth;
}

}  // namespace

void MeasureGrowth(const std::string& plot) {
  std::printf("| Reading (warm) | size: time | | | |\n|---|---|---|---|---|\n");
  const std::vector<Sample> samples = MadeSamples();
  const Bytes &photo = samples.front().file, &icon = samples.back().file;
  std::vector<Growth> curves;
  curves.push_back(Grow("blocks", {1000, 10000, 100000, 1000000}, Comments));
  curves.push_back(Grow("images, 32 × 32", {10, 100, 1000, 10000}, [&](int64_t n) { return Repeated(icon, n); }));
  curves.push_back(Grow(
      "pixels, photos", {1, 10, 100, 320}, [&](int64_t n) { return Repeated(photo, n); }, 1024 * 768));
  curves.push_back(Grow(
      "pixels, one colour", {1, 16, 256, 1024}, [](int64_t n) { return Plain(n); }, 1024 * 1024));
  std::printf("\n");
  WritePlot(plot, curves);
}
