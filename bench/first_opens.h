#pragma once

// The first time that a file is opened: each in a process of its own, whose memory is new.

#include <vector>

#include "bench/samples.h"

// Prints a table. `program` is this one, which must call `OpenOnce` when its arguments are "--open", a codec's number
// and a file.
void CompareFirstOpens(const char* program, int rounds, const std::vector<Sample>& samples);
int OpenOnce(const char* codec, const char* path);
