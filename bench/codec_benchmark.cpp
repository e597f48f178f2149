// Each codec on each sample image, one at a time, for work on a coder: --benchmark_filter=decode/photo. Bytes per
// second are bytes of pixels. What is quoted comes from `compare`, which runs the codecs in turns.

#include <benchmark/benchmark.h>

#include "bench/codecs.h"

static void Add(const std::string& name, const Work& work, int64_t bytes) {
  const auto measure = [work, bytes](benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) work();
    state.SetBytesProcessed(bytes * static_cast<int64_t>(state.iterations()));
  };
  benchmark::RegisterBenchmark(name.c_str(), measure)->Unit(benchmark::kMicrosecond);
}

int main(int argc, char** argv) {
  const std::vector<SampleImage> images = SampleImages();
  std::vector<Bytes> files;
  for (const SampleImage& image : images) files.push_back(EncodeSample(image));
  for (size_t i = 0; i < images.size(); ++i) {
    for (const Codec& codec : Codecs()) {
      const auto bytes = static_cast<int64_t>(images[i].pixels.size()) * (codec.all_frames ? images[i].frames : 1);
      Add("decode/" + images[i].name + "/" + codec.name, codec.decode(files[i]), bytes);
      if (codec.encode) Add("encode/" + images[i].name + "/" + codec.name, codec.encode(images[i]), bytes);
    }
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
}
