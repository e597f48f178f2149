// Small files that claim much: what they may cost in memory and time, in a process that has little memory.

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <vector>

#include "codec/reader.h"
#include "codec/row_budget.h"

namespace {

using Bytes = std::vector<uint8_t>;

Bytes Repeat(Bytes bytes, const Bytes& more, int times) {
  for (int i = 0; i < times; ++i) bytes.insert(bytes.end(), more.begin(), more.end());
  return bytes;
}

const Bytes kScreen = {'G', 'I', 'F', '8', '9', 'a', 1, 0, 1, 0, 0, 0, 0};

// An image whose data end at once, or are one clear code.
Bytes Image(int width, int height, bool data = false) {
  const auto low = [](int value) { return static_cast<uint8_t>(value); };
  Bytes image = {0x2C, 0, 0, 0, 0, low(width), low(width >> 8), low(height), low(height >> 8), 0, 8};
  const Bytes codes = {2, 0, 1};
  if (data) image.insert(image.end(), codes.begin(), codes.end());
  image.push_back(0);
  return image;
}

struct Counts {
  int32_t blocks = 0, pictures = 0;
};

Counts Read(const MyFILE& from) {
  MyFILE stream = from;
  Gif* gif = NewGif();
  ReadGif(&stream, gif);
  Counts counts{gif->count};
  for (int32_t i = 0; i < gif->count; ++i) counts.pictures += gif->blocks[i]->picture != nullptr;
  DeleteGif(gif);
  return counts;
}

// Address space in use, in bytes.
rlim_t InUse() {
  long pages = 0;
  FILE* file = std::fopen("/proc/self/statm", "r");
  if (file && std::fscanf(file, "%ld", &pages) != 1) pages = 0;
  if (file) std::fclose(file);
  return static_cast<rlim_t>(pages) * static_cast<rlim_t>(sysconf(_SC_PAGESIZE));
}

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kLimitsMemory = false;  // the sanitizer needs all the address space there is
#else
constexpr bool kLimitsMemory = true;
#endif
constexpr rlim_t kMiB = 1 << 20;

TEST(Bounds, FilesThatClaimMuchCostLittle) {
  struct Case {
    const char* name;
    Bytes file;
    int blocks, pictures;  // pictures: -1 for any number
    rlim_t spare;          // address space for reading
    long touched_kib;      // memory that may really be used
    double longest_s;
  };
  const Case cases[] = {
      {"no pixels for 35 bytes", Repeat(kScreen, Image(65535, 65535), 1), 1, 0, 80 * kMiB, 4096, 0.5},
      {"what 35 bytes may have", Repeat(kScreen, Image(8192, 8000), 1), 1, 1, 80 * kMiB, 4096, 0.5},
      {"20,000 images of 4 GiB", Repeat(kScreen, Image(65535, 65535), 20000), 20000, 0, 80 * kMiB, 8192, 2},
      {"20,000 images of 64 MiB", Repeat(kScreen, Image(8192, 8192), 20000), 20000, -1, 600 * kMiB, 16384, 4},
      {"20,000 images with a code each", Repeat(kScreen, Image(8192, 8192, true), 20000), 20000, -1, 600 * kMiB,
       65536, 4},
      {"a million empty images", Repeat(kScreen, Image(0, 0), 1000000), 1000000, 1000000, 600 * kMiB, 512 * 1024, 4},
      {"a million extensions", Repeat(kScreen, {0x21, 0xFE, 0}, 1000000), 1000000, 0, 300 * kMiB, 256 * 1024, 4},
      {"a million sub-blocks", Repeat(Repeat(kScreen, {0x21, 0xFE}, 1), {1, 65}, 1000000), 1, 0, 300 * kMiB,
       256 * 1024, 4},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const auto size = static_cast<int64_t>(c.file.size());
    const auto start = std::chrono::steady_clock::now();
    const pid_t child = fork();
    if (child == 0) {
      const rlimit limit = {InUse() + c.spare, InUse() + c.spare};
      if (kLimitsMemory) setrlimit(RLIMIT_AS, &limit);
      rusage before{}, after{};
      getrusage(RUSAGE_SELF, &before);
      const Counts counts = Read({c.file.data(), size, 0, nullptr});
      getrusage(RUSAGE_SELF, &after);
      const bool counted = counts.blocks == c.blocks && (c.pictures < 0 || counts.pictures == c.pictures);
      const bool lean = !kLimitsMemory || after.ru_maxrss - before.ru_maxrss <= c.touched_kib;
      if (!counted || !lean) {
        std::fprintf(stderr, "%d blocks, %d pictures, %ld KiB\n", counts.blocks, counts.pictures,
                     after.ru_maxrss - before.ru_maxrss);
      }
      _exit(counted ? lean ? 0 : 2 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    EXPECT_EQ(status, 0);
    EXPECT_LT(taken.count(), c.longest_s * (kLimitsMemory ? 1 : 5));
  }
}

// The budget's edge, to the byte.
TEST(Bounds, RowsCostPixelsAndPointers) {
  constexpr int64_t kFree = 64 << 20;
  const uint8_t byte = 0;
  struct Case {
    const char* name;
    int64_t size;  // of the stream
    std::vector<std::array<int32_t, 2>> images;
    bool last_fits;
  };
  const Case cases[] = {
      {"all that is free", 0, {{8184, 8192}}, true},
      {"a byte more", 0, {{8184, 8192}, {0, 1}}, false},
      {"a byte of stream for that", 1, {{8184, 8192}, {0, 1}}, true},
      {"and no more than it gives", 1, {{8184, 8192}, {16376, 1}, {0, 1}}, false},
      {"what is refused costs nothing", 1, {{65535, 65535}, {8184, 8192}, {16376, 1}}, true},
      {"nothing for no rows", 0, {{8184, 8192}, {65535, 0}}, true},
      {"more than 32 bits", (int64_t{1} << 31) - 1, {{65535, 65535}, {65535, 65535}, {65535, 65535}}, true},
  };
  static_assert((8184 + 8) * int64_t{8192} == kFree);
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const MyFILE stream = {&byte, c.size, 0, nullptr};
    RowBudget budget(&stream);
    bool fits = false;
    for (const auto& [width, height] : c.images) fits = budget.Spend(width, height);
    EXPECT_EQ(fits, c.last_fits);
  }
}

// A file counts whole from the start; a pipe's bytes once they have been delivered.
TEST(Bounds, PipesCountWhatTheyDelivered) {
  const Bytes large = Image(16384, 8192), padding = {0x21, 0xFE, 4, 1, 2, 3, 4, 0};
  const Bytes early = Repeat(Repeat(kScreen, large, 1), padding, 2000);
  const Bytes late = Repeat(Repeat(kScreen, padding, 2000), large, 1);
  struct Case {
    const Bytes& bytes;
    bool pipe;
    int pictures;
  };
  for (const Case& c : {Case{early, false, 1}, Case{early, true, 0}, Case{late, true, 1}}) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    FILE* file = c.pipe ? fdopen(ends[0], "rb") : std::tmpfile();
    FILE* writing = c.pipe ? fdopen(ends[1], "wb") : file;
    ASSERT_EQ(std::fwrite(c.bytes.data(), 1, c.bytes.size(), writing), c.bytes.size());  // fits a pipe's buffer
    if (c.pipe) {
      std::fclose(writing);
    } else {
      std::rewind(file);
    }
    EXPECT_EQ(Read({nullptr, 0, 0, file}).pictures, c.pictures);
    std::fclose(file);
  }
}

}  // namespace
