#pragma once

// The text of file names: UTF-16, in which they travel, and UTF-8, in which the C library takes them. May throw
// std::bad_alloc.

#include <optional>
#include <string>
#include <string_view>

// Nothing when the bytes are no name here. Where any bytes may be a name, each one that is not part of UTF-8 text
// becomes the unit 0xDC00 + byte, a lone surrogate that no text holds, and `Utf8Name` turns it into that byte again.
std::optional<std::u16string> Utf16Name(std::string_view text);

// Nothing when the units have no UTF-8 form, or hold a NUL, which would cut the name short.
std::optional<std::string> Utf8Name(std::u16string_view units);

// Normalisation form D: base characters and marks in place of characters that combine them.
std::u16string FormD(std::u16string_view units);
