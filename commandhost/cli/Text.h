// Laying out text for people: widths of UTF-8 text on a terminal, showing what a terminal must
// not be sent, and wrapping at blanks.
#pragma once

#include <array>

#include <string>
#include <string_view>
#include <vector>

namespace CommandHost {

// One character at the start of UTF-8 text: its code point and its bytes. A byte that starts
// no UTF-8 sequence (an overlong form, a surrogate, a code point above U+10FFFF, a sequence cut
// short) stands alone, with `valid` false.
struct Utf8Character {
    char32_t code = 0;
    size_t bytes = 1;
    bool valid = false;
};
// The first character of `text`, which is not empty.
Utf8Character DecodeCharacter(std::string_view text);
// Appends `code` to `out` in UTF-8.
void AppendUtf8(char32_t code, std::string& out);
// What stands for a character that can't be given: U+FFFD, the replacement character.
inline constexpr char32_t kReplacementCharacter = 0xFFFD;

// How a format writes text: which ASCII bytes stand as they are, how it writes the other ASCII
// bytes, and which characters beyond ASCII it can carry (the others become U+FFFD).
struct TextEscaping {
    std::array<bool, 256> plain;
    void (*escapeAscii)(char c, std::string& out);
    bool (*carries)(char32_t code);
};
// Appends `text` to `out` as `escaping` says, each byte that is no UTF-8 as U+FFFD: whatever the
// bytes, the format stays well-formed. Runs of plain bytes, most texts, are copied whole.
void AppendEscaped(std::string_view text, const TextEscaping& escaping, std::string& out);

// Columns that a character takes on a terminal: 0 for a combining mark or another character
// drawn over its neighbour, 2 for a wide one (East Asian wide and fullwidth, emoji), else 1.
size_t CharacterWidth(char32_t character);

// Columns that UTF-8 `text` takes: the sum of its characters' widths, a byte that is no UTF-8
// counting one.
size_t DisplayWidth(std::string_view text);

// `text` as a terminal may be sent it: what would move the cursor, change the terminal's state
// or reorder the line is written as an escape instead. Line feed, carriage return and tab are
// \n, \r and \t, escape \e, other C0 characters and DEL \xHH; C1 characters, the line and
// paragraph separators, the bidirectional controls (U+202A-U+202E, U+2066-U+2069) and the
// noncharacters (U+FDD0-U+FDEF, U+FFFE and U+FFFF of each plane) \uHHHH, or \UHHHHHHHH above
// U+FFFF; a byte that is no UTF-8 \xHH.
std::string VisibleText(std::string_view text);

// Breaks `text` into lines of at most `width` columns at blanks; a word longer than a line is
// cut. Line breaks already in the text are kept. Gives at least one line.
std::vector<std::string> WrapText(std::string_view text, size_t width);

// A value the user gave, quoted for a one-line message: 'value'. Control characters are
// written \n, \t or \xHH, and a value longer than 60 characters is cut there and its length
// given: 'aaaa...' (100000 characters).
std::string QuoteValue(std::string_view value);

}  // namespace CommandHost
