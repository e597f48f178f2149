#pragma once

#include <string>

namespace host {

// Files that this process removes when it ends: also by SIGINT, SIGTERM, SIGHUP or SIGALRM, unless something else
// handles those. Not by SIGKILL, and a path too long to be noted (4096 bytes) only by who noted it.

void NoteUnfinished(const std::string& path);
void ForgetUnfinished(const std::string& path);
void RemoveUnfinished();  // for an end that runs nothing else

}  // namespace host
