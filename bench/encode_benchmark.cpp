// Whole documents written to a stream that goes nowhere, by this codec and by two that people use. Bytes per second
// are bytes of pixels. Compare medians of interleaved repetitions on one core:
// --benchmark_enable_random_interleaving=true --benchmark_repetitions=9 --benchmark_report_aggregates_only=true

#include <benchmark/benchmark.h>
#include <gd.h>
#include <gif_lib.h>

#include <algorithm>
#include <functional>
#include <memory>

#include "bench/sample_images.h"
#include "codec/reader.h"
#include "codec/writer.h"

// Each makes what it writes once and gives the work to measure.
using Work = std::function<void()>;

static std::shared_ptr<FILE> Nowhere() {
  std::shared_ptr<FILE> file(std::fopen("/dev/null", "wb"), std::fclose);
  std::setvbuf(file.get(), nullptr, _IOFBF, 0x100000);
  return file;
}

static Work Ours(const SampleImage& image) {
  const std::vector<uint8_t> bytes = EncodeSample(image);
  MyFILE source = {bytes.data(), static_cast<int64_t>(bytes.size()), 0, nullptr};
  const std::shared_ptr<Gif> gif(NewGif(), DeleteGif);
  ReadGif(&source, gif.get());
  return [gif, file = Nowhere()] {
    MyFILE stream = {nullptr, 0, 0, file.get()};
    WriteGif(&stream, gif.get());
  };
}

static Work Giflib(const SampleImage& image) {
  const auto write = [](GifFileType* gif, const GifByteType* bytes, int count) {
    return static_cast<int>(std::fwrite(bytes, 1, static_cast<size_t>(count), static_cast<FILE*>(gif->UserData)));
  };
  const std::shared_ptr<ColorMapObject> colours(GifMakeMapObject(1 << image.depth, nullptr), GifFreeMapObject);
  return [=, pixels = image.pixels, file = Nowhere()]() mutable {
    GifFileType* gif = EGifOpen(file.get(), write, nullptr);
    EGifPutScreenDesc(gif, image.width, image.height, image.depth, 0, colours.get());
    for (int32_t frame = 0; frame < image.frames; ++frame) {
      EGifPutImageDesc(gif, 0, 0, image.width, image.height, false, nullptr);
      for (int32_t y = 0; y < image.height; ++y) {
        const int32_t row = (y + frame * 3) % image.height;
        EGifPutLine(gif, pixels.data() + static_cast<std::ptrdiff_t>(row) * image.width, image.width);
      }
    }
    EGifCloseFile(gif, nullptr);
  };
}

// libgd writes the first image only.
static Work Libgd(const SampleImage& image) {
  const std::shared_ptr<gdImage> picture(gdImageCreate(image.width, image.height), gdImageDestroy);
  for (int i = 0; i < 1 << image.depth; ++i) gdImageColorAllocate(picture.get(), i, i, i);
  for (int32_t y = 0; y < image.height; ++y) {
    std::copy_n(image.pixels.data() + static_cast<std::ptrdiff_t>(y) * image.width, image.width, picture->pixels[y]);
  }
  return [picture] {
    int size = 0;
    gdFree(gdImageGifPtr(picture.get(), &size));
  };
}

static void Add(const SampleImage& image, const char* codec, const Work& work, int32_t frames) {
  const auto bytes = static_cast<int64_t>(image.pixels.size()) * frames;
  const auto measure = [work, bytes](benchmark::State& state) {
    for (auto _ : state) work();
    state.SetBytesProcessed(bytes * static_cast<int64_t>(state.iterations()));
  };
  benchmark::RegisterBenchmark((image.name + "/" + codec).c_str(), measure)->Unit(benchmark::kMicrosecond);
}

int main(int argc, char** argv) {
  for (const SampleImage& image : SampleImages()) {
    Add(image, "ours", Ours(image), image.frames);
    Add(image, "giflib", Giflib(image), image.frames);
    Add(image, "libgd", Libgd(image), 1);
  }
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
