// Whole documents from memory, made and released, by this codec and by two that people use. Bytes per second
// are bytes of pixels.

#include <benchmark/benchmark.h>
#include <gd.h>
#include <gif_lib.h>

#include <cstdlib>
#include <cstring>
#include <memory>

#include "bench/sample_images.h"
#include "codec/document.h"
#include "codec/reader.h"

using Bytes = std::vector<uint8_t>;

static void Ours(const Bytes& file) {
  MyFILE stream{file.data(), static_cast<int64_t>(file.size()), 0, nullptr};
  Gif* gif = NewGif();
  ReadGif(&stream, gif);
  benchmark::DoNotOptimize(gif->blocks);
  DeleteGif(gif);
}

static void Giflib(const Bytes& file) {
  struct Source {
    const uint8_t* bytes;
    size_t left;
  } source{file.data(), file.size()};
  const auto read = [](GifFileType* gif, GifByteType* bytes, int count) {
    auto* from = static_cast<Source*>(gif->UserData);
    const size_t got = std::min(from->left, static_cast<size_t>(count));
    std::memcpy(bytes, from->bytes, got);
    from->bytes += got;
    from->left -= got;
    return static_cast<int>(got);
  };
  GifFileType* gif = DGifOpen(&source, read, nullptr);
  if (DGifSlurp(gif) != GIF_OK) std::abort();
  benchmark::DoNotOptimize(gif->SavedImages);
  DGifCloseFile(gif, nullptr);
}

// libgd reads the first image only.
static void Libgd(const Bytes& file) {
  gdImagePtr image =
      gdImageCreateFromGifPtr(static_cast<int>(file.size()), const_cast<uint8_t*>(file.data()));
  if (!image) std::abort();
  benchmark::DoNotOptimize(image->pixels);
  gdImageDestroy(image);
}

int main(int argc, char** argv) {
  for (const SampleImage& image : SampleImages()) {
    const auto file = std::make_shared<Bytes>(EncodeSample(image));
    const auto pixels = static_cast<int64_t>(image.pixels.size());
    const auto add = [&](const char* codec, void (*decode)(const Bytes&), int64_t bytes) {
      benchmark::RegisterBenchmark((image.name + "/" + codec).c_str(),
                                   [file, decode, bytes](benchmark::State& state) {
                                     for ([[maybe_unused]] auto _ : state) decode(*file);
                                     state.SetBytesProcessed(state.iterations() * bytes);
                                   });
    };
    add("ours", Ours, pixels * image.frames);
    add("giflib", Giflib, pixels * image.frames);
    add("libgd", Libgd, pixels);
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
}
