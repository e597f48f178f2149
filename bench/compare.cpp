// Prints docs/performance.md's figures, as Markdown, and draws its plot:
//
//   compare PLOT.svg ROUNDS [FOLDER]
//
// On its own samples, or on a folder's GIF files. One core, every codec in turn, medians of the ratios of each round.
// Ratios above 1: this codec is faster.

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>
#include <string>

#include "bench/codecs.h"
#include "bench/first_opens.h"
#include "bench/growth.h"
#include "bench/heap_peak.h"
#include "bench/turns.h"
#include "codec/reader.h"
#include "codec/writer.h"
#include "entry/buffered_file.h"
#include "picture/picture_editor.h"
#include "picture/row_renderer.h"

namespace {

using Document = std::unique_ptr<Gif, void (*)(Gif*)>;

// One table: every sample, by `make`, which gives a codec's work or none.
template <typename Make>
void CompareCodecs(const char* verb, double Goals::*goal, int rounds, const std::vector<Sample>& samples, Make make) {
  std::printf("| %s (warm) | giflib, MB/s | ours, MB/s | against giflib | goal |", verb);
  for (const Codec& codec : Codecs().subspan(2)) std::printf(" against %s |", codec.name);
  std::printf("\n|---|---|---|---|---|");
  for (size_t i = 2; i < Codecs().size(); ++i) std::printf("---|");
  std::printf("\n");
  for (const Sample& sample : samples) {
    const Document gif(ReadSample(sample.file), DeleteGif);
    if (!FirstPicture(gif.get())) continue;
    const double pixels = static_cast<double>(AllPixels(gif.get()));
    const double of_first = pixels / (double{1} * FirstPicture(gif.get())->width * FirstPicture(gif.get())->height);
    std::vector<Work> works;
    std::vector<size_t> place;  // of each codec in `works`
    for (const Codec& codec : Codecs()) {
      place.push_back(works.size());
      if (Work work = make(codec, sample, gif.get())) works.push_back(std::move(work));
    }
    place.push_back(works.size());
    const auto measured = MeasureInTurns(works, rounds);
    const double ratio = MedianRatio(measured, 1, 0);
    std::printf("| %s | %.0f | %.0f | **%s** | %s |", sample.name.c_str(), pixels * 1e-6 / MedianSeconds(measured, 1),
                pixels * 1e-6 / MedianSeconds(measured, 0), Times(ratio).c_str(),
                Against(ratio, sample.goals.*goal).c_str());
    for (size_t i = 2; i < Codecs().size(); ++i) {
      const bool there = place[i] != place[i + 1];
      const double scale = Codecs()[i].all_images ? 1 : of_first;
      std::printf(" %s |", there ? Times(MedianRatio(measured, place[i], 0) * scale).c_str() : "–");
    }
    std::printf("\n");
    std::fflush(stdout);
  }
  std::printf("\n");
}

void CompareRendering(int rounds) {
  constexpr int64_t kRows = PictureEditor::kRowsAtOnce;
  const struct {
    int64_t width, height;
    uint32_t colours;
    double goal;
  } rows[] = {{4096, 4096, 256, 0.50},
              {1024, 768, 256, 0.25},
              {4096, 4096, 16, 0.60},
              {1024, 768, 16, 0},
              {32, 32, 256, 0.30}};
  std::printf("| Rendering to 32-bit pixels (warm) | of memset's speed | goal |\n|---|---|---|\n");
  for (const auto& row : rows) {
    std::minstd_rand random(5);
    PixelTable table;
    table.fill(0xFF000000);
    for (uint32_t i = 0; i < row.colours; ++i) table[i] = 0xFF000000 | static_cast<uint32_t>(random());
    Bytes indexes(static_cast<size_t>(row.width * row.height)), pixels(indexes.size() * 4);
    for (uint8_t& index : indexes) index = static_cast<uint8_t>((random() >> 8) % row.colours);
    const auto render = [&] {
      const RowRenderer renderer(table);
      for (int64_t y = 0; y < row.height; y += kRows) {
        const uint8_t* from[kRows];
        uint8_t* to[kRows];
        size_t count = 0;
        for (; count < kRows && y + static_cast<int64_t>(count) < row.height; ++count) {
          const auto first = static_cast<size_t>((y + static_cast<int64_t>(count)) * row.width);
          from[count] = &indexes[first];
          to[count] = &pixels[4 * first];
        }
        renderer.RenderRows({from, count}, row.width, to);
      }
    };
    const auto fill = [&] {
      std::memset(pixels.data(), 0x55, pixels.size());
      asm volatile("" : : "r"(pixels.data()) : "memory");
    };
    const double ratio = MedianRatio(MeasureInTurns({render, fill}, rounds), 1, 0);
    const std::string goal = row.goal == 0       ? "–"
                             : ratio >= row.goal ? std::to_string(static_cast<int>(row.goal * 100)) + " % ✓"
                                                 : std::to_string(static_cast<int>(row.goal * 100)) + " % missed";
    std::printf("| %lld × %lld, %u colours | **%.0f %%** | %s |\n", static_cast<long long>(row.width),
                static_cast<long long>(row.height), row.colours, ratio * 100, goal.c_str());
  }
  std::printf("\n");
}

// As scripts open a file: a stream and its buffer, made and closed.
Work OpenFile(const std::string& path) {
  return [path] {
    BufferedFile file(std::fopen(path.c_str(), "rb"));
    MyFILE stream = {nullptr, 0, 0, file.get()};
    Gif* gif = NewGif();
    ReadGif(&stream, gif);
    file.Close();
    DeleteGif(gif);
  };
}

void CompareFiles(int rounds, const std::vector<Sample>& samples) {
  std::printf("| Opening from a file (warm) | time, of opening from memory | goal |\n|---|---|---|\n");
  for (const Sample& sample : samples) {
    char path[] = "/tmp/compareXXXXXX";
    FILE* file = fdopen(mkstemp(path), "wb");
    std::fwrite(sample.file.data(), 1, sample.file.size(), file);
    std::fclose(file);
    const double ratio = MedianRatio(MeasureInTurns({Codecs()[0].decode(sample.file), OpenFile(path)}, rounds), 1, 0);
    std::printf("| %s | %.2f × | %s |\n", sample.name.c_str(), ratio, ratio <= 1.1 ? "1.10 × ✓" : "1.10 × missed");
    unlink(path);
  }
  std::printf("\n");
}

void MeasureHeap(const std::vector<Sample>& samples) {
  std::printf("| Heap beyond the document | reading, at most | writing, at most |\n|---|---|---|\n");
  for (const Sample& sample : samples) {
    ForgetHeapUse();
    MyFILE source = {sample.file.data(), static_cast<int64_t>(sample.file.size()), 0, nullptr};
    const Document gif(NewGif(), DeleteGif);
    ReadGif(&source, gif.get());
    const HeapUse read = CurrentHeapUse();
    ForgetHeapUse();
    FILE* nowhere = std::fopen("/dev/null", "wb");
    MyFILE target = {nullptr, 0, 0, nowhere};
    WriteGif(&target, gif.get());
    std::fclose(nowhere);
    std::printf("| %s | %lld bytes | %lld bytes |\n", sample.name.c_str(),
                static_cast<long long>(read.peak - read.now), static_cast<long long>(CurrentHeapUse().peak));
  }
  std::printf("\nThe decoders' tables lie on the stack, below 104 KiB.\n\n");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 4 && std::strcmp(argv[1], "--open") == 0) return OpenOnce(argv[2], argv[3]);
  if (argc < 3) {
    std::fprintf(stderr, "Usage: compare PLOT.svg ROUNDS [FOLDER]\n");
    return 2;
  }
  const int rounds = std::atoi(argv[2]);
  PinToOneCore();
  const std::vector<Sample> samples = argc > 3 ? SamplesOf(argv[3]) : MadeSamples();
  CompareCodecs("Decoding", &Goals::decode, rounds, samples,
                [](const Codec& codec, const Sample& sample, const Gif*) { return codec.decode(sample.file); });
  CompareFirstOpens(argv[0], rounds, samples);
  CompareCodecs("Encoding", &Goals::encode, rounds, samples, [](const Codec& codec, const Sample&, const Gif* gif) {
    return codec.encode ? codec.encode(gif) : Work();
  });
  CompareRendering(rounds);
  CompareFiles(rounds, samples);
  MeasureHeap(samples);
  if (argc == 3) MeasureGrowth(argv[1]);
}
