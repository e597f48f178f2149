#include "host/program/program_options.h"

#include <charconv>
#include <functional>
#include <map>
#include <stdexcept>

#include "host/core/text.h"

namespace host {

const char kHelpText[] =
    R"(Usage: gifhost [OPTION...] [SCRIPT [ARGUMENT...]]
       gifhost [OPTION...] COMMAND [ARGUMENT...]
Loads a plugin and runs a Lua 5.4 script that uses it. Without a script: a prompt, or the script on standard input.

  list [--json]            the classes that the plugin registered (a script named "list" is run as ./list)
  describe [--json] [CLASS]
                           the members of all of them, or of one class
  annotations              the classes as a Lua annotation file, for editors
  validate [--only NAME]... [--seed N] [--sample FILE]... [--failed] [--json] [--list]
                           the suite that a plugin must pass, each case in a process of its own; samples are
                           files that mean something to the plugin; status 1 when a case fails; --failed tells of
                           those alone, --json of all for programs

  -e CODE                  run this code instead of a script; several go together, a line each
  --plugin FILE            the plugin to load (default: what the script asks for, else the designed one)
  --as-designed            gif_plugin.so beside this program, whatever the script asks for
  --tolerant               gif_plugin_tolerant.so beside this program: reads on with a full code table, and saves
                           indexes beyond the colours
  --host-version V         the version that the host says it is (default 2019.01; "none": it does not tell)
  --without NAME           hide a host function, a host class or a host's declared method from the plugin; repeatable
                           (without a function that counts references or locks they are not checked)
  --largest-block BYTES    the largest MemoryBlock that can be made
  --c-modules              let scripts load libraries of C code (package.loadlib, package.cpath)
  --trace                  each host call and each handler call on standard error, one line each

  --pictures KIND          console: libgd images (default); desktop: bitmap contexts
  --application NAME       the application class that exists (default: as the pictures; "none": no such class)
  --picture-type N         the kind that pictures say they are
  --no-draw-picture        Graphics lack DrawPicture
  --alpha-info N           of bitmap contexts: 0 to 7 (default 2)
  --bits-per-pixel N       of bitmap contexts: 32 (default) or 24
  --row-padding BYTES      of bitmap contexts: bytes after each row

  --help, --version

Exit status: 0; 1 the script failed; 2 wrong usage; 70 the plugin broke a rule; 71 something was still alive.
)";

namespace {

[[noreturn]] void Reject(const std::string& what) { throw std::invalid_argument(what); }

template <class Number>
Number ToNumber(const std::string& option, const std::string& text, Number least, Number most) {
  Number number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || !(number >= least && number <= most)) {
    Reject(Text(option, " needs a number from ", least, " to ", most, ", not \"", text, "\""));
  }
  return number;
}

using Setter = std::function<void(ProgramOptions&, const std::string& option, const std::string& value)>;

const std::map<std::string, Setter>& OptionsWithValue() {
  static const std::map<std::string, Setter> options = {
      {"-e", [](auto& to, auto&, auto& value) { to.code = to.code ? *to.code + "\n" + value : value; }},
      {"--plugin", [](auto& to, auto&, auto& value) { to.plugin = value; }},
      {"--host-version",
       [](auto& to, auto& option, auto& value) {
         to.host.version.reset();
         if (value != "none") to.host.version = ToNumber<double>(option, value, 0, 1e6);
       }},
      {"--without", [](auto& to, auto&, auto& value) { to.host.without.push_back(value); }},
      {"--largest-block",
       [](auto& to, auto& option, auto& value) {
         to.host.largest_block = ToNumber<int64_t>(option, value, 0, INT64_MAX);
       }},
      {"--pictures",
       [](auto& to, auto&, auto& value) {
         if (value != "console" && value != "desktop")
           Reject("--pictures is console or desktop, not \"" + value + "\"");
         to.host.pictures = value == "desktop" ? PictureKind::kDesktop : PictureKind::kConsole;
       }},
      {"--application", [](auto& to, auto&, auto& value) { to.host.application = value == "none" ? "" : value; }},
      {"--picture-type", [](auto& to, auto& option,
                            auto& value) { to.host.picture_type = ToNumber<int64_t>(option, value, 0, INT32_MAX); }},
      {"--alpha-info",
       [](auto& to, auto& option, auto& value) { to.host.alpha_info = ToNumber<uint32_t>(option, value, 0, 7); }},
      {"--bits-per-pixel",
       [](auto& to, auto&, auto& value) {
         if (value != "24" && value != "32") Reject("--bits-per-pixel is 24 or 32, not \"" + value + "\"");
         to.host.bits_per_pixel = value == "24" ? 24 : 32;
       }},
      {"--row-padding", [](auto& to, auto& option,
                           auto& value) { to.host.row_padding = ToNumber<size_t>(option, value, 0, 1u << 20); }},
  };
  return options;
}

bool SetSwitch(ProgramOptions& to, const std::string& option) {
  if (option == "--trace") {
    to.host.trace = true;
  } else if (option == "--c-modules") {
    to.c_modules = true;
  } else if (option == "--as-designed" || option == "--tolerant") {
    to.plugin = option == "--tolerant" ? "tolerant" : "designed";
  } else if (option == "--no-draw-picture") {
    to.host.without.emplace_back("DrawPicture");
  } else if (option == "--help" || option == "-h") {
    to.help = true;
  } else if (option == "--version") {
    to.version = true;
  } else {
    return false;
  }
  return true;
}

}  // namespace

ProgramOptions ParseOptions(const std::vector<std::string>& command_line) {
  ProgramOptions options;
  size_t next = 0;
  while (next < command_line.size() && command_line[next].starts_with('-') && command_line[next] != "-") {
    std::string option = command_line[next++];
    if (option == "--") break;
    if (SetSwitch(options, option)) continue;
    std::optional<std::string> value;
    if (const size_t equals = option.find('='); option.starts_with("--") && equals != std::string::npos) {
      value = option.substr(equals + 1);
      option.resize(equals);
    }
    const auto found = OptionsWithValue().find(option);
    if (found == OptionsWithValue().end()) Reject(Text("unknown option ", option, "; see --help"));
    if (!value) {
      if (next == command_line.size()) Reject(Text(option, " needs a value; see --help"));
      value = command_line[next++];
    }
    found->second(options, option, *value);
  }
  if (!options.code && next < command_line.size()) options.script = command_line[next++];
  options.arguments.assign(command_line.begin() + static_cast<std::ptrdiff_t>(next), command_line.end());
  return options;
}

}  // namespace host
