// Laying out text for people: widths of UTF-8 text and wrapping at blanks.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace CommandHost {

// Columns that `text` takes: one per character of UTF-8.
size_t DisplayWidth(std::string_view text);

// Breaks `text` into lines of at most `width` columns at blanks; a word longer than a line is
// cut. Line breaks already in the text are kept. Gives at least one line.
std::vector<std::string> WrapText(std::string_view text, size_t width);

// A value the user gave, quoted for a one-line message: 'value'. Control characters are
// written \n, \t or \xHH, and a value longer than 60 characters is cut there and its length
// given: 'aaaa...' (100000 characters).
std::string QuoteValue(std::string_view value);

}  // namespace CommandHost
