#include "host/program/line_editor.h"

#if defined(GIFHOST_LINE_EDITOR_READLINE)
#include <readline/history.h>
#include <readline/readline.h>
#elif defined(GIFHOST_LINE_EDITOR_LIBEDIT)
#include <editline/readline.h>
#endif

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <string_view>

#include "host/core/names.h"

namespace host {

#if defined(GIFHOST_LINE_EDITOR_NONE)

LineEnd ReadLine(const char* prompt, std::string& line) {
  std::cout << prompt << std::flush;
  return std::getline(std::cin, line) ? LineEnd::kEntered : LineEnd::kNoMore;
}

void SetCompleter(Completer /*completer*/) {}

#else

namespace {

// Of names; within quotes files are looked for.
constexpr char kWordBreaks[] = " \t\n\"'=<>(){}[]+-*/%,;#~^|&.:";

// readline hands nothing on.
Completer complete;
std::vector<std::string> candidates;
size_t next_candidate = 0;

char* NextMatch(const char* /*text*/, int state) {
  if (state == 0) next_candidate = 0;
  return next_candidate < candidates.size() ? strdup(candidates[next_candidate++].c_str()) : nullptr;
}

// Leaves those that begin with the text; in other letters' case where none does as it stands. Names that begin with
// "_" are for those who ask.
void LeaveMatching(std::string_view text) {
  const auto begin = [&](const std::string& candidate) { return std::string_view(candidate).substr(0, text.size()); };
  const bool exact = std::ranges::any_of(candidates, [&](const std::string& each) { return begin(each) == text; });
  std::erase_if(candidates, [&](const std::string& each) {
    return exact ? begin(each) != text || (text.empty() && each.starts_with('_')) : !SameName(begin(each), text);
  });
}

char** CompleteWord(const char* text, int /*start*/, int end) {
  candidates.clear();
  rl_completion_append_character = '\0';
  if (!complete(std::string(rl_line_buffer, static_cast<size_t>(end)), candidates)) return nullptr;
  LeaveMatching(text);
  rl_attempted_completion_over = 1;
  return rl_completion_matches(text, NextMatch);
}

#if defined(GIFHOST_LINE_EDITOR_READLINE)

volatile std::sig_atomic_t was_interrupted = 0;
void NoteInterrupt(int /*number*/) { was_interrupted = 1; }

// The next character; when there was an interruption meanwhile the end of a line that has become empty.
int ReadCharacter(std::FILE* input) {
  for (;;) {
    rl_check_signals();
    if (was_interrupted != 0) {
      rl_replace_line("", 0);
      return '\n';
    }
    pollfd waiting = {fileno(input), POLLIN, 0};
    if (poll(&waiting, 1, -1) >= 0) return rl_getc(input);
    if (errno != EINTR) return EOF;
  }
}

// While a line is read Ctrl-C drops it.
class Interruptible {
 public:
  Interruptible() {
    was_interrupted = 0;
    rl_getc_function = ReadCharacter;
    struct sigaction now = {};
    now.sa_handler = NoteInterrupt;
    sigaction(SIGINT, &now, &before_);
  }
  ~Interruptible() { sigaction(SIGINT, &before_, nullptr); }
  Interruptible(const Interruptible&) = delete;
  Interruptible& operator=(const Interruptible&) = delete;

  bool interrupted() const { return was_interrupted != 0; }

 private:
  struct sigaction before_ = {};
};

#else

struct Interruptible {
  bool interrupted() const { return false; }
};

#endif

}  // namespace

LineEnd ReadLine(const char* prompt, std::string& line) {
  const Interruptible interruptible;
  const std::unique_ptr<char, decltype(&std::free)> read(readline(prompt), std::free);
  if (interruptible.interrupted()) return LineEnd::kDropped;
  if (!read) return LineEnd::kNoMore;
  if (*read != '\0') add_history(read.get());
  line = read.get();
  return LineEnd::kEntered;
}

void SetCompleter(Completer completer) {
  complete = std::move(completer);
  rl_attempted_completion_function = CompleteWord;
  rl_basic_word_break_characters = const_cast<char*>(kWordBreaks);
  rl_completer_quote_characters = const_cast<char*>("\"'");
}

#endif

}  // namespace host
