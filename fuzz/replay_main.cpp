// What the fuzzers are without a fuzzing engine: each file and each folder of files named on the command line is
// an input.

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

static int Replay(const std::filesystem::path& path) {
  if (std::filesystem::is_directory(path)) {
    int inputs = 0;
    for (const auto& entry : std::filesystem::directory_iterator(path)) inputs += Replay(entry.path());
    return inputs;
  }
  std::ifstream file(path, std::ios::binary);
  const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
  LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
  return 1;
}

int main(int argc, char** argv) {
  int inputs = 0;
  for (int i = 1; i < argc; ++i) inputs += Replay(argv[i]);
  std::printf("%d inputs\n", inputs);
  return inputs > 0 ? 0 : 1;
}
