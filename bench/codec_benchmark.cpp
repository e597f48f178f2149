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
  const std::vector<Sample> samples = MadeSamples();
  for (const Sample& sample : samples) {
    const Gif* gif = ReadSample(sample.file);  // for as long as the program
    const GifPicture* first = FirstPicture(gif);
    for (const Codec& codec : Codecs()) {
      const int64_t bytes = codec.all_images ? AllPixels(gif) : int64_t{first->width} * first->height;
      Add("decode/" + sample.name + "/" + codec.name, codec.decode(sample.file), bytes);
      if (codec.encode) Add("encode/" + sample.name + "/" + codec.name, codec.encode(gif), bytes);
    }
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
}
