#pragma once

#include <functional>
#include <string>
#include <vector>

namespace host {

enum class LineEnd { kEntered, kDropped, kNoMore };  // kDropped: by Ctrl-C

// Reads lines from the terminal, which may be edited there as far as the library that it was built with goes.
LineEnd ReadLine(const char* prompt, std::string& line);

// Fills in candidates for what stands at the end of a part of a line; gives false where they are files' names.
using Completer = std::function<bool(const std::string& before_cursor, std::vector<std::string>& candidates)>;
void SetCompleter(Completer completer);

}  // namespace host
