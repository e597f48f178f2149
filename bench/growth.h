#pragma once

// How the time to read grows with a file's size: prints a table and draws a plot of it.

#include <string>

void MeasureGrowth(const std::string& plot);
