// The command "validate": the suite that a plugin must pass. Each case runs in a process of its own, so that none can
// spoil the next.

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <stdexcept>

#include "host/classes/full_host.h"
#include "host/core/exit_status.h"
#include "host/core/messages.h"
#include "host/core/text.h"
#include "host/host/final_status.h"
#include "host/program/commands.h"
#include "host/program/json.h"
#include "host/program/plugin_file.h"
#include "host/program/validate_cases.h"

namespace host {
namespace {

constexpr unsigned kSecondsForCase = 300;
constexpr rlim_t kLargestFile = 64 << 20;  // bytes that a case may write

struct Arguments {
  std::vector<std::string> only;  // names, or what stands before their dot; empty: all
  bool list = false;
  bool failed = false;  // tells of cases that fail alone
  bool json = false;
  Trial trial;
};

std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::invalid_argument(Text("can't read ", path));
  return {std::istreambuf_iterator<char>(file), {}};
}

uint64_t ToSeed(const std::string& text) {
  uint64_t seed = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seed);
  if (error != std::errc() || end != text.data() + text.size()) throw std::invalid_argument("--seed needs a number");
  return seed;
}

Arguments ParseArguments(const std::vector<std::string>& given) {
  Arguments parsed;
  for (size_t i = 0; i < given.size(); ++i) {
    const std::string& option = given[i];
    if (option == "--list" || option == "--failed" || option == "--json") {
      (option == "--list" ? parsed.list : option == "--json" ? parsed.json : parsed.failed) = true;
      continue;
    }
    if (option != "--only" && option != "--seed" && option != "--sample") {
      throw std::invalid_argument(Text("validate does not take \"", option, "\"; see --help"));
    }
    if (++i == given.size()) throw std::invalid_argument(option + " needs a value; see --help");
    if (option == "--only") parsed.only.push_back(given[i]);
    if (option == "--seed") parsed.trial.seed = ToSeed(given[i]);
    if (option == "--sample") parsed.trial.samples.push_back(ReadFile(given[i]));
  }
  return parsed;
}

bool IsNamed(const Case& checked, const std::string& name) {
  return checked.name == name || checked.name.starts_with(name + ".");
}

std::vector<Case> Choose(std::vector<Case> cases, const std::vector<std::string>& only) {
  for (const std::string& name : only) {
    if (std::none_of(cases.begin(), cases.end(), [&](const Case& checked) { return IsNamed(checked, name); })) {
      throw std::invalid_argument(Text("there is no case \"", name, "\"; see validate --list"));
    }
  }
  std::erase_if(cases, [&](const Case& checked) {
    return !only.empty() &&
           std::none_of(only.begin(), only.end(), [&](const std::string& name) { return IsNamed(checked, name); });
  });
  return cases;
}

// --- In the child --------------------------------------------------------------------------------------------------

// Gives the exit status; what is wrong stands on stderr.
int RunCase(const Case& checked, const Trial& trial) {
  try {
    FullHost host(checked.options);
    try {
      host.LoadPlugin(trial.plugin);
    } catch (const std::runtime_error&) {
      if (!checked.may_not_load) throw;
    }
    checked.run(host, trial);
    return FinalStatus(host, kExitSuccess);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", Shown(error.what()).c_str());
    return kExitFailed;
  }
}

void Limit(int resource, rlim_t most) {
  const rlimit limit = {most, most};
  setrlimit(static_cast<__rlimit_resource>(resource), &limit);
}

[[noreturn]] void BeChild(const Case& checked, const Trial& trial, int output) {
  dup2(output, STDOUT_FILENO);
  dup2(output, STDERR_FILENO);
  Limit(RLIMIT_CORE, 0);
  Limit(RLIMIT_FSIZE, kLargestFile);
  std::signal(SIGXFSZ, SIG_IGN);  // writing more fails, as on a full disk
  alarm(kSecondsForCase);
  const int status = RunCase(checked, trial);
  std::fflush(nullptr);
  std::_Exit(status);
}

// --- In the parent -------------------------------------------------------------------------------------------------

// A folder for the files that cases write: the children's current one.
class WorkFolder {
 public:
  WorkFolder() : before_(std::filesystem::current_path()) {
    std::string name = std::filesystem::temp_directory_path() / "validate-XXXXXX";
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("can't make a temporary folder");
    path_ = name;
    std::filesystem::current_path(path_);
  }
  ~WorkFolder() {
    std::error_code error;
    std::filesystem::current_path(before_, error);
    std::filesystem::remove_all(path_, error);
  }
  WorkFolder(const WorkFolder&) = delete;
  WorkFolder& operator=(const WorkFolder&) = delete;

 private:
  std::filesystem::path before_;
  std::filesystem::path path_;
};

struct Outcome {
  std::string failure;  // empty: it passed
  std::string output;
};

std::string FailureOf(int wait_status) {
  if (WIFSIGNALED(wait_status)) {
    return WTERMSIG(wait_status) == SIGALRM ? "took too long" : strsignal(WTERMSIG(wait_status));
  }
  switch (WEXITSTATUS(wait_status)) {
    case kExitSuccess:
      return "";
    case kExitFault:
      return "broke a rule";
    case kExitLeak:
      return "left something alive";
    default:
      return "failed";
  }
}

std::string ReadAll(std::FILE* file) {
  std::string text;
  std::rewind(file);
  for (int c = std::getc(file); c != EOF; c = std::getc(file)) text += static_cast<char>(c);
  return text;
}

Outcome RunInChild(const Case& checked, const Trial& trial) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> output(std::tmpfile(), std::fclose);
  if (!output) throw std::runtime_error("can't make a temporary file");
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child < 0) throw std::runtime_error("can't start a process");
  if (child == 0) BeChild(checked, trial, fileno(output.get()));
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  return {FailureOf(status), ReadAll(output.get())};
}

// What a case wrote, indented below its line.
void PrintOutput(std::string output) {
  if (output.empty() || output.back() != '\n') output += '\n';
  for (size_t begin = 0; begin < output.size(); begin = output.find('\n', begin) + 1) {
    const size_t length = output.find('\n', begin) - begin;
    std::printf("      %.*s\n", static_cast<int>(length), output.c_str() + begin);
  }
}

// Tells of cases as they end: for people, where a case that fails as another one did names that one, or for programs.
class Reporter {
 public:
  explicit Reporter(const Arguments& arguments) : arguments_(arguments) {}

  void Tell(const Case& checked, const Outcome& outcome) {
    const bool passed = outcome.failure.empty();
    ++told_;
    if (!passed) ++failed_;
    if (passed && arguments_.failed) return;
    if (arguments_.json) {
      lines_.push_back(JsonObject({{"case", JsonString(checked.name)},
                                   {"passed", JsonBoolean(passed)},
                                   {"failure", passed ? "null" : JsonString(outcome.failure)},
                                   {"output", JsonString(outcome.output)}}));
      return;
    }
    if (passed) {
      std::printf("ok    %s\n", checked.name.c_str());
      if (checked.options.trace) PrintOutput(outcome.output);
      return;
    }
    const auto [first, is_new] = first_with_.try_emplace({outcome.failure, outcome.output}, checked.name);
    std::printf("FAIL  %s: %s%s%s\n", checked.name.c_str(), outcome.failure.c_str(), is_new ? "" : ", as ",
                is_new ? "" : first->second.c_str());
    if (is_new) PrintOutput(outcome.output);
  }

  // Gives the exit status.
  int End() const {
    if (arguments_.json) {
      std::printf("%s\n", JsonArray(lines_).c_str());
    } else {
      std::printf("%d %s, %d failed; seed %llu\n", told_, told_ == 1 ? "case" : "cases", failed_,
                  static_cast<unsigned long long>(arguments_.trial.seed));
    }
    return failed_ == 0 ? kExitSuccess : kExitFailed;
  }

 private:
  const Arguments& arguments_;
  int told_ = 0;
  int failed_ = 0;
  std::map<std::pair<std::string, std::string>, std::string> first_with_;  // failure and output: the first case
  std::vector<std::string> lines_;
};

}  // namespace

int RunValidate(const ProgramOptions& options) {
  Arguments arguments = ParseArguments(options.arguments);
  arguments.trial.plugin = PluginFile(options.plugin);
  const std::vector<Case> cases = Choose(Cases(options.host), arguments.only);
  if (arguments.list) {
    for (const Case& checked : cases) std::printf("%s\n", checked.name.c_str());
    return kExitSuccess;
  }
  if (!std::filesystem::exists(arguments.trial.plugin)) {
    throw std::runtime_error(Text("there is no plugin ", arguments.trial.plugin));
  }
  const WorkFolder folder;
  Reporter reporter(arguments);
  for (const Case& checked : cases) reporter.Tell(checked, RunInChild(checked, arguments.trial));
  return reporter.End();
}

}  // namespace host
