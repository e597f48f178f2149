#include "host/core/unfinished_files.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <cstring>

namespace host {
namespace {

// Fixed memory: a signal handler looks at it.
struct Note {
  std::atomic<bool> used{false};
  std::array<char, 4096> path{};
};
std::array<Note, 512> notes;

void RemoveAll() {
  for (Note& note : notes) {
    if (note.used.exchange(false)) unlink(note.path.data());
  }
}

void RemoveAllAndDie(int signal_number) {
  RemoveAll();
  std::signal(signal_number, SIG_DFL);
  std::raise(signal_number);
}

// A child that was forked must not remove its parent's files.
pid_t owner = 0;

void WatchForTheEnd() {
  if (owner != 0) return;
  owner = getpid();
  std::atexit(RemoveUnfinished);
  for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGALRM}) {
    struct sigaction now = {};
    sigaction(number, nullptr, &now);
    if (now.sa_handler != SIG_DFL) continue;
    now.sa_handler = RemoveAllAndDie;
    sigaction(number, &now, nullptr);
  }
}

}  // namespace

void RemoveUnfinished() {
  if (getpid() == owner) RemoveAll();
}

void NoteUnfinished(const std::string& path) {
  WatchForTheEnd();
  const auto free = std::ranges::find_if(notes, [](const Note& note) { return !note.used; });
  if (free == notes.end() || path.size() >= free->path.size()) return;
  std::memcpy(free->path.data(), path.c_str(), path.size() + 1);
  free->used = true;
}

void ForgetUnfinished(const std::string& path) {
  for (Note& note : notes) {
    if (note.used && path == note.path.data()) note.used = false;
  }
}

}  // namespace host
