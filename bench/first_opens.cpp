#include "bench/first_opens.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

#include "bench/codecs.h"
#include "bench/turns.h"

int OpenOnce(const char* codec, const char* path) {
  std::ifstream file(path, std::ios::binary);
  const Bytes bytes(std::istreambuf_iterator<char>(file), {});
  const Work work = Codecs()[static_cast<size_t>(std::atoi(codec))].decode(bytes);
  std::printf("%.9f\n", SecondsOf(work, 1));
  return 0;
}

// What `OpenOnce` prints in a new process.
static double SecondsOfFirst(const char* program, size_t codec, const char* path) {
  const std::string command = std::string(program) + " --open " + std::to_string(codec) + " " + path;
  FILE* output = popen(command.c_str(), "r");
  double seconds = 0;
  if (!output || std::fscanf(output, "%lf", &seconds) != 1) std::exit(1);
  pclose(output);
  return seconds;
}

void CompareFirstOpens(const char* program, int rounds, const std::vector<Sample>& samples) {
  std::printf(
      "| First open (cold: new processes) | giflib, ms | ours, ms | against giflib | goal "
      "|\n|---|---|---|---|---|\n");
  for (const Sample& sample : samples) {
    char path[] = "/tmp/first_openXXXXXX";
    FILE* file = fdopen(mkstemp(path), "wb");
    std::fwrite(sample.file.data(), 1, sample.file.size(), file);
    std::fclose(file);
    std::vector<std::vector<double>> measured;
    for (int round = 0; round < rounds; ++round) {
      measured.push_back({SecondsOfFirst(program, 0, path), SecondsOfFirst(program, 1, path)});
    }
    unlink(path);
    const double ratio = MedianRatio(measured, 1, 0);
    std::printf("| %s | %.3g | %.3g | **%s** | %s |\n", sample.name.c_str(), 1e3 * MedianSeconds(measured, 1),
                1e3 * MedianSeconds(measured, 0), Times(ratio).c_str(),
                Against(ratio, sample.goals.first_open).c_str());
    std::fflush(stdout);
  }
  std::printf("\n");
}
