#pragma once

#include <string>
#include <string_view>

namespace host {

// Text as a terminal may be given it: control characters, and bytes that are no UTF-8, as \x1B and \u{9B}. Names of
// files can hold anything.
std::string Shown(std::string_view text, std::string_view kept = "");

// "gifhost: " and the text, as it may be shown, in a line of standard error.
void Complain(std::string_view text, std::string_view kept = "");

}  // namespace host
