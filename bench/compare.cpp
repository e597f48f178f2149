// Prints docs/performance.md's figures, as Markdown, and draws its plot:
//
//   compare PLOT.svg [ROUNDS]
//
// One core, every codec in turn, medians of the ratios of each round. Ratios above 1: this codec is faster.

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>
#include <string>

#include "bench/codecs.h"
#include "bench/growth_plot.h"
#include "bench/heap_peak.h"
#include "bench/turns.h"
#include "codec/format.h"
#include "codec/memory.h"
#include "codec/reader.h"
#include "codec/writer.h"
#include "entry/buffered_file.h"
#include "picture/row_renderer.h"

namespace {

// What is to be reached against giflib, by sample image.
struct Goal {
  const char* image;
  double decode, encode;  // 0: none set
};
constexpr Goal kGoals[] = {
    {"photo 1024x768", 5.5, 2.3},
    {"animation, 20 full frames", 5, 0},
    {"user interface, 16 colours", 20, 5},
    {"user interface, 64 colours", 20, 5},
    {"noise", 3.5, 2.7},
    {"one colour 4096^2", 80, 60},
    {"icon 32x32, shaded", 8, 0},
    {"icon 32x32, flat", 8, 0},
};

std::string Times(double ratio) {
  char text[32];
  std::snprintf(text, sizeof text, ratio < 10 ? "%.1f ×" : "%.0f ×", ratio);
  return text;
}

std::string Against(double ratio, double goal) {
  if (goal == 0) return "–";
  return Times(goal) + (ratio >= goal ? " ✓" : " missed");
}

// One table: every sample image, by `make`, which gives a codec's work or none.
template <typename Make>
void CompareCodecs(const char* verb, double Goal::*goal, int rounds, const std::vector<SampleImage>& images,
                   Make make) {
  std::printf("| %s | giflib, MB/s | ours, MB/s | against giflib | goal | against libgd | against stb_image |\n",
              verb);
  std::printf("|---|---|---|---|---|---|---|\n");
  for (size_t i = 0; i < images.size(); ++i) {
    std::vector<Work> works;
    for (const Codec& codec : Codecs()) works.push_back(make(codec, i));
    const bool stb = works.back() != nullptr;
    if (!stb) works.pop_back();
    const auto measured = MeasureInTurns(works, rounds);
    const double megabytes = static_cast<double>(images[i].pixels.size()) * images[i].frames * 1e-6;
    const double ratio = MedianRatio(measured, 1, 0);
    std::printf("| %s | %.0f | %.0f | **%s** | %s | %s | %s |\n", images[i].name.c_str(),
                megabytes / MedianSeconds(measured, 1), megabytes / MedianSeconds(measured, 0), Times(ratio).c_str(),
                Against(ratio, kGoals[i].*goal).c_str(),
                Times(MedianRatio(measured, 2, 0) * images[i].frames).c_str(),
                stb ? Times(MedianRatio(measured, 3, 0)).c_str() : "–");
    std::fflush(stdout);
  }
  std::printf("\n");
}

void CompareRendering(int rounds) {
  const struct {
    int64_t width, height;
    uint32_t colours;
    double goal;
  } rows[] = {{4096, 4096, 256, 0.50}, {1024, 768, 256, 0.25}, {4096, 4096, 16, 0.60}, {1024, 768, 16, 0}};
  std::printf("| Rendering to 32-bit pixels | of memset's speed | goal |\n|---|---|---|\n");
  for (const auto& row : rows) {
    std::minstd_rand random(5);
    PixelTable table;
    table.fill(0xFF000000);
    for (uint32_t i = 0; i < row.colours; ++i) table[i] = 0xFF000000 | static_cast<uint32_t>(random());
    Bytes indexes(static_cast<size_t>(row.width * row.height)), pixels(indexes.size() * 4);
    for (uint8_t& index : indexes) index = static_cast<uint8_t>((random() >> 8) % row.colours);
    const auto render = [&] {
      const RowRenderer renderer(table);
      for (int64_t y = 0; y < row.height; ++y) {
        renderer.Render(&indexes[static_cast<size_t>(y * row.width)], row.width,
                        &pixels[static_cast<size_t>(4 * y * row.width)]);
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

void CompareFiles(int rounds, const std::vector<SampleImage>& images, const std::vector<Bytes>& files) {
  std::printf("| Opening from a file | time, of opening from memory | goal |\n|---|---|---|\n");
  for (size_t i = 0; i < images.size(); ++i) {
    char path[] = "/tmp/compareXXXXXX";
    FILE* file = fdopen(mkstemp(path), "wb");
    std::fwrite(files[i].data(), 1, files[i].size(), file);
    std::fclose(file);
    const double ratio = MedianRatio(MeasureInTurns({Codecs()[0].decode(files[i]), OpenFile(path)}, rounds), 1, 0);
    std::printf("| %s | %.2f × | %s |\n", images[i].name.c_str(), ratio, ratio <= 1.1 ? "1.10 × ✓" : "1.10 × missed");
    unlink(path);
  }
  std::printf("\n");
}

void MeasureHeap(const std::vector<SampleImage>& images, const std::vector<Bytes>& files) {
  std::printf("| Heap beyond the document | reading, at most | writing, at most |\n|---|---|---|\n");
  for (size_t i = 0; i < images.size(); ++i) {
    ForgetHeapUse();
    MyFILE source = {files[i].data(), static_cast<int64_t>(files[i].size()), 0, nullptr};
    const std::unique_ptr<Gif, void (*)(Gif*)> gif(NewGif(), DeleteGif);
    ReadGif(&source, gif.get());
    const HeapUse read = CurrentHeapUse();
    ForgetHeapUse();
    FILE* nowhere = std::fopen("/dev/null", "wb");
    MyFILE target = {nullptr, 0, 0, nowhere};
    WriteGif(&target, gif.get());
    std::fclose(nowhere);
    std::printf("| %s | %lld bytes | %lld bytes |\n", images[i].name.c_str(),
                static_cast<long long>(read.peak - read.now), static_cast<long long>(CurrentHeapUse().peak));
  }
  std::printf("\nThe decoders' tables lie on the stack, below 64 KiB together.\n\n");
}

// --- Growth --------------------------------------------------------------------------------------------------------

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

// An image of one colour, with that many pixels on each side.
Bytes Plain(int32_t side) {
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

void MeasureGrowth(const char* plot, const std::vector<SampleImage>& images, const std::vector<Bytes>& files) {
  std::printf("| Reading | size: time | | | |\n|---|---|---|---|---|\n");
  std::vector<Growth> curves;
  curves.push_back(Grow("blocks", {1000, 10000, 100000, 1000000}, Comments));
  curves.push_back(
      Grow("images, 32 × 32", {10, 100, 1000, 10000}, [&](int64_t n) { return Repeated(files.back(), n); }));
  const auto photo_pixels = static_cast<int64_t>(images[0].pixels.size());
  curves.push_back(Grow(
      "pixels, photos", {1, 10, 100, 320}, [&](int64_t n) { return Repeated(files[0], n); }, photo_pixels));
  Growth plain{"pixels, one colour", {}};
  std::printf("| pixels, one colour |");
  for (const int32_t side : {1024, 4096, 16384, 32768}) {
    const Bytes file = Plain(side);
    const double seconds = MedianSeconds(MeasureInTurns({Codecs()[0].decode(file)}, 3), 0);
    plain.points.emplace_back(static_cast<double>(side) * side, seconds);
    std::printf(" %.3g: %.3g s |", static_cast<double>(side) * side, seconds);
  }
  std::printf("\n\n");
  curves.push_back(std::move(plain));
  WritePlot(plot, curves);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "Usage: compare PLOT.svg [ROUNDS]\n");
    return 2;
  }
  const int rounds = argc > 2 ? std::atoi(argv[2]) : 15;
  PinToOneCore();
  const std::vector<SampleImage> images = SampleImages();
  std::vector<Bytes> files;
  for (const SampleImage& image : images) files.push_back(EncodeSample(image));
  CompareCodecs("Decoding", &Goal::decode, rounds, images,
                [&](const Codec& codec, size_t i) { return codec.decode(files[i]); });
  CompareCodecs("Encoding", &Goal::encode, rounds, images,
                [&](const Codec& codec, size_t i) { return codec.encode ? codec.encode(images[i]) : Work(); });
  CompareRendering(rounds);
  CompareFiles(rounds, images, files);
  MeasureHeap(images, files);
  MeasureGrowth(argv[1], images, files);
}
