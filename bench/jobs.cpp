// Prints docs/performance.md's table of whole jobs, as Markdown:
//
//   jobs GIFHOST EXAMPLES ROUNDS
//
// Each is a whole process, our script and the tool that a user would pick in turns, with its wall time and the most
// memory it had. Works in the current folder, which gets their inputs and outputs.

#include <gd.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <iterator>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "bench/turns.h"

namespace {

// %g stands for our script host, %e for the folder of its scripts.
struct Job {
  const char* name;
  const char* ours;
  double goal_seconds;
  const char* other;  // the tool's name is the first word
  double goal_megabytes = INFINITY;
};
constexpr Job kJobs[] = {
    {"start-up", "%g -e return", 0.004, "gifsicle --version"},
    {"`first`, one colour 4096²", "%g %e/first.lua one.gif out.png", 0.13,
     "/usr/bin/python3 -c \"from PIL import Image; Image.open('one.gif').convert('RGBA').save('out2.png')\"", 165},
    {"`first`, scan 2480 × 3508", "%g %e/first.lua scan.gif out.png", 0.11,
     "/usr/bin/python3 -c \"from PIL import Image; Image.open('scan.gif').convert('RGBA').save('out2.png')\""},
    {"`build --own-tables`, 60 PNG of 640 × 480", "%g %e/build.lua --own-tables png/*.png own.gif", 6,
     "ffmpeg -v error -y -i png/%02d.png -filter_complex "
     "'split[a][b];[a]palettegen=stats_mode=single[p];[b][p]paletteuse=new=1' own2.gif"},
    {"`build`, one table", "%g %e/build.lua png/*.png one_table.gif", 1.5,
     "ffmpeg -v error -y -i png/%02d.png -filter_complex 'split[a][b];[a]palettegen[p];[b][p]paletteuse' one2.gif"},
    {"`edit --delay`, that animation", "%g %e/edit.lua --delay x2 own.gif edited.gif", 0.2,
     "gifsicle -d20 own.gif -o edited2.gif"},
    {"`edit --delay`, recording of a terminal", "%g %e/edit.lua --delay x2 terminal.gif edited.gif", 0.08,
     "gifsicle -d20 terminal.gif -o edited2.gif"},
    {"`check`, 30 files", "%g %e/check.lua thirty", 0.5, "gifsicle -U thirty/*.gif -o /dev/null"},
    {"Clone of a million extensions", "%g -e \"FolderItem('million.gif'):OpenAsGIFZKV():Clone()\"", 2, nullptr, 800},
    {"Clone of a million images, 1 × 1", "%g -e \"FolderItem('images.gif'):OpenAsGIFZKV():Clone()\"", 2.5, nullptr,
     1600},
    {"`tree`, 100,000 blocks", "%g %e/tree.lua blocks.gif", 1, "gifsicle -I blocks.gif"},
    {"`report`, 10,000 palettes", "%g %e/report.lua palettes.gif palettes.html", 4, nullptr},
};

// --- Inputs
// ---------------------------------------------------------------------------------------------------------

void Put(FILE* file, int64_t count, const std::string& bytes) {
  for (int64_t i = 0; i < count; ++i) std::fwrite(bytes.data(), 1, bytes.size(), file);
}

// A file of blocks, all alike, for a screen of one pixel and two colours.
void MakeBlocks(const char* path, int64_t count, const std::string& block) {
  FILE* file = std::fopen(path, "wb");
  Put(file, 1, std::string("GIF89a\1\0\1\0\x80\0\0\0\0\0\xFF\xFF\xFF", 19));
  Put(file, count, block);
  Put(file, 1, ";");
  std::fclose(file);
}

void SaveGif(gdImagePtr image, const char* path) {
  FILE* file = std::fopen(path, "wb");
  gdImageGif(image, file);
  std::fclose(file);
  gdImageDestroy(image);
}

void MakeScan() {
  gdImagePtr scan = gdImageCreate(2480, 3508);
  for (int i = 0; i < 16; ++i) gdImageColorAllocate(scan, 255 - 17 * i, 255 - 17 * i, 255 - 17 * i);
  std::mt19937 random(1);
  for (int y = 100; y < 3400; y += 60) {
    for (int x = 100; x < 2300; x += 28) {
      const int at = x + static_cast<int>(random() % 12), grey = 1 + static_cast<int>(random() % 14);
      gdImageFilledRectangle(scan, at, y, at + 4, y + 40, 15);
      gdImageLine(scan, at + 5, y, at + 5, y + 40, grey);
      gdImageFilledRectangle(scan, x, y + 20, x + 20, y + 24, 15);
    }
  }
  SaveGif(scan, "scan.gif");
}

// A coloured scene that moves.
void MakePhotos() {
  std::mt19937 random(1);
  for (int frame = 0; frame < 60; ++frame) {
    gdImagePtr photo = gdImageCreateTrueColor(640, 480);
    for (int y = 0; y < 480; ++y) {
      for (int x = 0; x < 640; ++x) {
        const double at = (x + 3 * frame) / 90.0, light = 90 + 50 * std::sin(at + std::cos(y / 70.0));
        const int grain = static_cast<int>(random() % 8);
        photo->tpixels[y][x] =
            gdTrueColor(static_cast<int>(light) + grain, static_cast<int>(110 + 60 * std::sin(y / 50.0 + at)) + grain,
                        static_cast<int>(120 + 70 * std::cos(at * 2)) + grain);
      }
    }
    char path[32];
    std::snprintf(path, sizeof path, "png/%02d.png", frame);
    FILE* file = std::fopen(path, "wb");
    gdImagePng(photo, file);
    std::fclose(file);
    gdImageDestroy(photo);
  }
}

// Codes as some encoders write them: when the table is full it is used on, without clearing it.
std::string CodesWithoutClearing(const std::vector<uint8_t>& pixels) {
  std::string bytes;
  uint32_t bits = 0, filled = 0, width = 9, next = 258;
  const auto put = [&](uint32_t code) {
    bits |= code << filled;
    for (filled += width; filled >= 8; filled -= 8, bits >>= 8) bytes += static_cast<char>(bits);
  };
  std::vector<uint16_t> table(4096 * 256);  // by a code and the pixel that follows
  put(256);
  uint32_t string = pixels.front();
  for (size_t i = 1; i < pixels.size(); ++i) {
    uint16_t& longer = table[string << 8 | pixels[i]];
    if (longer != 0) {
      string = longer;
      continue;
    }
    put(string);
    string = pixels[i];
    if (next == 4096) continue;
    if (next == 1u << width) ++width;
    longer = static_cast<uint16_t>(next++);
  }
  put(string);
  put(257);
  put(0);
  return bytes;
}

// A terminal's screen that fills with lines of letters, and is recorded whole each time.
void MakeTerminal() {
  constexpr int kWidth = 1776, kHeight = 270, kFrames = 37;
  std::vector<uint8_t> screen(kWidth * kHeight, 1);
  std::mt19937 random(1);
  FILE* file = std::fopen("terminal.gif", "wb");
  const auto size = [](int n) { return std::string{static_cast<char>(n), static_cast<char>(n >> 8)}; };
  const std::string area = size(kWidth) + size(kHeight);
  Put(file, 1, "GIF89a" + area + std::string("\xF7\0\0", 3));
  for (int grey = 0; grey < 256; ++grey) Put(file, 3, std::string(1, static_cast<char>(grey)));
  for (int frame = 0; frame < kFrames; ++frame) {
    for (int letter = 0; letter < 20; ++letter) {
      const size_t at = static_cast<size_t>(frame % 13 * 20 * kWidth + 10 + 12 * (frame / 13 * 20 + letter));
      const uint32_t shape = static_cast<uint32_t>(random() % 40) * 2654435761u;
      for (size_t y = 3; y < 17; ++y) {
        for (size_t x = 0; x < 8; ++x) screen[at + y * kWidth + x] = shape >> (x + y) & 1 ? 240 : 1;
      }
    }
    const std::string codes = CodesWithoutClearing(screen);
    Put(file, 1, std::string("!\xF9\4\4\5\0\0\0,\0\0\0\0", 13) + area + std::string("\0\x08", 2));
    for (size_t at = 0; at < codes.size(); at += 255) {
      const std::string piece = codes.substr(at, 255);
      Put(file, 1, std::string(1, static_cast<char>(piece.size())) + piece);
    }
    Put(file, 1, std::string(1, '\0'));
  }
  Put(file, 1, ";");
  std::fclose(file);
}

void MakeInputs() {
  [[maybe_unused]] const int made = std::system("mkdir -p png thirty");
  gdImagePtr one = gdImageCreate(4096, 4096);
  gdImageColorAllocate(one, 20, 90, 160);
  SaveGif(one, "one.gif");
  MakeScan();
  MakePhotos();
  MakeTerminal();
  const std::string pixel("\x2C\0\0\0\0\1\0\1\0\0\2\2\x44\1\0", 15);
  MakeBlocks("million.gif", 1000000, std::string("!\xFE\2hi\0", 6));
  MakeBlocks("images.gif", 1000000, pixel);
  MakeBlocks("blocks.gif", 50000, std::string("!\xF9\4\0\5\0\0\0", 8) + pixel);
  MakeBlocks("palettes.gif", 10000, std::string("\x2C\0\0\0\0\1\0\1\0\x80\0\0\0\xFF\xFF\xFF\2\2\x44\1\0", 21));
  for (int i = 0; i < 30; ++i) {
    gdImagePtr image = gdImageCreateTrueColor(300, 200);
    gdImageFilledEllipse(image, 150, 100, 5 * i + 20, 90, gdTrueColor(255, 8 * i, 90));
    SaveGif(image, ("thirty/" + std::to_string(i) + ".gif").c_str());
  }
}

// --- Measuring
// ------------------------------------------------------------------------------------------------------

struct Use {
  double seconds = 0, megabytes = 0;
  bool ended_well = false;
};

// Becomes the command, by way of a shell where its words need one.
[[noreturn]] void Become(const std::string& command) {
  if (command.find_first_of("'\"*[]();") != std::string::npos) {
    execl("/bin/sh", "sh", "-c", ("exec " + command).c_str(), nullptr);
    _exit(127);
  }
  std::istringstream text(command);
  std::vector<std::string> words{std::istream_iterator<std::string>(text), {}};
  std::vector<char*> arguments;
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  execvp(arguments[0], arguments.data());
  _exit(127);
}

// Runs it, its output dropped.
Use Run(const std::string& command) {
  timespec start, end;
  std::fflush(stdout);
  clock_gettime(CLOCK_MONOTONIC, &start);
  const pid_t child = fork();
  if (child == 0) {
    if (!std::freopen("/dev/null", "w", stdout) || !std::freopen("/dev/null", "w", stderr)) _exit(126);
    Become(command);
  }
  int status = 0;
  rusage usage{};
  wait4(child, &status, 0, &usage);
  clock_gettime(CLOCK_MONOTONIC, &end);
  return {static_cast<double>(end.tv_sec - start.tv_sec) + static_cast<double>(end.tv_nsec - start.tv_nsec) * 1e-9,
          static_cast<double>(usage.ru_maxrss) / 1024, WIFEXITED(status) && WEXITSTATUS(status) == 0};
}

std::string Replaced(std::string text, const std::string& what, const std::string& by) {
  for (size_t at; (at = text.find(what)) != std::string::npos;) text.replace(at, what.size(), by);
  return text;
}

// "0.31 s, 220 MB": medians, or what went wrong.
std::string Cell(const std::vector<Use>& uses, double* seconds, double* megabytes) {
  std::vector<double> times, sizes;
  for (const Use& use : uses) {
    if (!use.ended_well) return "failed or not here";
    times.push_back(use.seconds);
    sizes.push_back(use.megabytes);
  }
  *seconds = Median(times);
  *megabytes = Median(sizes);
  char text[64];
  std::snprintf(text, sizeof text, "%.3g s, %.0f MB", *seconds, *megabytes);
  return text;
}

// "0.13 s ✓, 165 MB missed"; without a goal nothing.
std::string Goal(double goal, const char* unit, double reached) {
  if (goal == INFINITY) return "";
  char text[64];
  std::snprintf(text, sizeof text, "%g %s %s", goal, unit, reached <= goal ? "✓" : "missed");
  return text;
}

void Measure(const Job& job, const std::string& gifhost, const std::string& examples, int rounds) {
  const std::string ours = Replaced(Replaced(job.ours, "%g", gifhost), "%e", examples);
  std::vector<Use> our_uses, other_uses;
  for (int round = 0; round < rounds; ++round) {
    our_uses.push_back(Run(ours));
    if (job.other) other_uses.push_back(Run(job.other));
  }
  double seconds = INFINITY, megabytes = INFINITY, other_seconds = 0, other_megabytes = 0;
  const std::string cell = Cell(our_uses, &seconds, &megabytes);
  const std::string memory_goal = Goal(job.goal_megabytes, "MB", megabytes);
  const std::string goal = Goal(job.goal_seconds, "s", seconds) + (memory_goal.empty() ? "" : ", ") + memory_goal;
  const std::string command = job.other ? job.other : "";
  const std::string tool = command.find("PIL") != std::string::npos ? "Pillow" : command.substr(0, command.find(' '));
  std::printf("| %s | **%s** | %s | %s |\n", job.name, cell.c_str(), goal.c_str(),
              job.other ? (tool + " " + Cell(other_uses, &other_seconds, &other_megabytes)).c_str() : "–");
  std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fprintf(stderr, "Usage: jobs GIFHOST EXAMPLES ROUNDS\n");
    return 2;
  }
  // In another process: what a child has before it becomes its program counts as its memory, too.
  if (const pid_t maker = fork(); maker == 0) {
    MakeInputs();
    _exit(0);
  } else {
    waitpid(maker, nullptr, 0);
  }
  std::printf("| Whole jobs (cold: new processes) | ours | goal | a user would pick |\n|---|---|---|---|\n");
  for (const Job& job : kJobs) Measure(job, argv[1], argv[2], std::atoi(argv[3]));
  std::printf("\n");
}
