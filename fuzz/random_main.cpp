// Runs a fuzz target on random inputs without an engine: random_main COUNT [FIRST]. The n-th input is always the
// same. Batches run in processes of their own, so that what an input leaves behind is gone with its batch.

#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

constexpr unsigned long kBatch = 500;

void RunInput(unsigned long number) {
  std::mt19937_64 random(number);
  std::vector<uint8_t> bytes(2 + random() % 2000);
  std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<uint8_t>(random()); });
  LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
}

// A minute of the processor's time, however busy the machine is: SIGPROF ends what takes longer.
void SetDeadline() {
  const itimerval minute{{0, 0}, {60, 0}};
  if (setitimer(ITIMER_PROF, &minute, nullptr) != 0) std::abort();
}

// What a child process runs; it tells its number as it goes, for the case that it falls.
[[noreturn]] void RunBatch(unsigned long first, unsigned long end, int progress) {
  for (unsigned long number = first; number < end; ++number) {
    if (pwrite(progress, &number, sizeof number, 0) != sizeof number) std::abort();
    SetDeadline();
    RunInput(number);
  }
  std::exit(0);
}

}  // namespace

int main(int argc, char** argv) {
  const unsigned long count = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 0;
  const unsigned long first = argc > 2 ? std::strtoul(argv[2], nullptr, 10) : 0;
  std::FILE* progress = std::tmpfile();
  if (progress == nullptr || count == 0) return 2;
  for (unsigned long begin = first; begin < first + count; begin += kBatch) {
    const pid_t child = fork();
    if (child < 0) return 2;
    if (child == 0) RunBatch(begin, std::min(begin + kBatch, first + count), fileno(progress));
    int status = 0;
    waitpid(child, &status, 0);
    if (status == 0) continue;
    unsigned long number = 0;
    if (pread(fileno(progress), &number, sizeof number, 0) != sizeof number) return 2;
    std::printf("input %lu fell: %s %d\n", number, WIFSIGNALED(status) ? "signal" : "status",
                WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status));
    return 1;
  }
  std::printf("%lu inputs\n", count);
  return 0;
}
