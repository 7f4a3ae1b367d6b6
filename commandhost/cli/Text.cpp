#include "commandhost/cli/Text.h"

namespace CommandHost {

namespace {

constexpr char kHex[] = "0123456789abcdef";

// Bytes of `text` that fill at most `columns` columns, at least one character.
size_t BytesOfColumns(std::string_view text, size_t columns) {
    size_t bytes = 0;
    size_t used = 0;
    while (bytes < text.size()) {
        const Utf8Character character = DecodeCharacter(text.substr(bytes));
        const size_t width = character.valid ? CharacterWidth(character.code) : 1;
        if (bytes > 0 && used + width > columns) {
            break;
        }
        used += width;
        bytes += character.bytes;
    }
    return bytes;
}

// Characters in `text`, a byte that is no UTF-8 counting one.
size_t CharacterCount(std::string_view text) {
    size_t count = 0;
    for (size_t bytes = 0; bytes < text.size(); ++count) {
        bytes += DecodeCharacter(text.substr(bytes)).bytes;
    }
    return count;
}

// Bytes of `text` that hold its first `count` characters.
size_t BytesOfCharacters(std::string_view text, size_t count) {
    size_t bytes = 0;
    for (size_t seen = 0; bytes < text.size() && seen < count; ++seen) {
        bytes += DecodeCharacter(text.substr(bytes)).bytes;
    }
    return bytes;
}

// Bytes at the start of `text` from `lowest` to 0x7E: ASCII, without DEL.
size_t AsciiRun(std::string_view text, unsigned char lowest) {
    size_t bytes = 0;
    while (bytes < text.size() && static_cast<unsigned char>(text[bytes]) >= lowest &&
           static_cast<unsigned char>(text[bytes]) < 0x7F) {
        ++bytes;
    }
    return bytes;
}

void AppendHexByte(unsigned char byte, std::string& out) {
    out.append("\\x").push_back(kHex[byte >> 4]);
    out.push_back(kHex[byte & 0xf]);
}

// C1 controls, the line and paragraph separators, the bidirectional controls, and the
// noncharacters, which no terminal draws.
bool IsShownAsCode(char32_t code) {
    return (code >= 0x80 && code <= 0x9F) || code == 0x2028 || code == 0x2029 ||
           (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069) ||
           (code >= 0xFDD0 && code <= 0xFDEF) || (code & 0xFFFE) == 0xFFFE;
}

// Characters of a value that a message shows before cutting it.
constexpr size_t kQuotedCharacters = 60;

void WrapLine(std::string_view line, size_t width, std::vector<std::string>& lines) {
    std::string current;
    size_t currentWidth = 0;
    auto flush = [&] {
        lines.push_back(std::move(current));
        current.clear();
        currentWidth = 0;
    };
    while (!line.empty()) {
        size_t blank = line.find(' ');
        std::string_view word = line.substr(0, blank);
        line.remove_prefix(blank == std::string_view::npos ? line.size() : blank + 1);
        if (word.empty()) {
            continue;
        }
        size_t wordWidth = DisplayWidth(word);
        if (currentWidth > 0 && currentWidth + 1 + wordWidth > width) {
            flush();
        }
        while (wordWidth > width) {
            if (currentWidth > 0) {
                flush();
            }
            size_t bytes = BytesOfColumns(word, width);
            lines.emplace_back(word.substr(0, bytes));
            word.remove_prefix(bytes);
            wordWidth = DisplayWidth(word);
        }
        if (!word.empty()) {
            if (currentWidth > 0) {
                current.push_back(' ');
                ++currentWidth;
            }
            current.append(word);
            currentWidth += wordWidth;
        }
    }
    if (currentWidth > 0) {
        lines.push_back(std::move(current));
    }
}

}  // namespace

Utf8Character DecodeCharacter(std::string_view text) {
    const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byte(0);
    if (lead < 0x80) {
        return {lead, 1, true};
    }
    const size_t length = lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 0;
    if (length == 0 || length > text.size()) {
        return {};
    }
    char32_t code = lead & (0x7F >> length);
    for (size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80) {
            return {};
        }
        code = (code << 6) | (byte(i) & 0x3F);
    }
    constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
    if (code < kSmallest[length] || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) {
        return {};
    }
    return {code, length, true};
}

void AppendEscaped(std::string_view text, const TextEscaping& escaping, std::string& out) {
    while (!text.empty()) {
        std::size_t plain = 0;
        while (plain < text.size() && escaping.plain[static_cast<unsigned char>(text[plain])]) {
            ++plain;
        }
        out.append(text.data(), plain);
        text.remove_prefix(plain);
        if (text.empty()) {
            break;
        }
        const Utf8Character character = DecodeCharacter(text);
        if (character.valid && character.bytes == 1) {
            escaping.escapeAscii(text[0], out);
        } else if (character.valid && escaping.carries(character.code)) {
            out.append(text.substr(0, character.bytes));
        } else {
            AppendUtf8(kReplacementCharacter, out);
        }
        text.remove_prefix(character.bytes);
    }
}

void AppendUtf8(char32_t code, std::string& out) {
    if (code < 0x80) {
        out.push_back(static_cast<char>(code));
        return;
    }
    const size_t length = code < 0x800 ? 2 : code < 0x10000 ? 3 : 4;
    constexpr unsigned char kLeads[] = {0, 0, 0xC0, 0xE0, 0xF0};
    out.push_back(static_cast<char>(kLeads[length] | (code >> (6 * (length - 1)))));
    for (size_t i = length - 1; i-- > 0;) {
        out.push_back(static_cast<char>(0x80 | ((code >> (6 * i)) & 0x3F)));
    }
}

size_t DisplayWidth(std::string_view text) {
    size_t width = 0;
    while (!text.empty()) {
        // A run of ASCII, what most values are, is one column a byte.
        const size_t ascii = AsciiRun(text, 0x00);
        width += ascii;
        text.remove_prefix(ascii);
        if (text.empty()) {
            break;
        }
        const Utf8Character character = DecodeCharacter(text);
        width += character.valid ? CharacterWidth(character.code) : 1;
        text.remove_prefix(character.bytes);
    }
    return width;
}

std::string VisibleText(std::string_view text) {
    std::string visible;
    visible.reserve(text.size());
    while (!text.empty()) {
        // A run of printable ASCII, what most values are, is shown as it is.
        const size_t printable = AsciiRun(text, 0x20);
        visible.append(text.data(), printable);
        text.remove_prefix(printable);
        if (text.empty()) {
            break;
        }
        const Utf8Character character = DecodeCharacter(text);
        const char32_t code = character.code;
        if (!character.valid) {
            AppendHexByte(static_cast<unsigned char>(text[0]), visible);
        } else if (code == '\n') {
            visible.append("\\n");
        } else if (code == '\r') {
            visible.append("\\r");
        } else if (code == '\t') {
            visible.append("\\t");
        } else if (code == 0x1B) {
            visible.append("\\e");
        } else if (code < 0x20 || code == 0x7F) {
            AppendHexByte(static_cast<unsigned char>(code), visible);
        } else if (IsShownAsCode(code)) {
            visible.append(code > 0xFFFF ? "\\U" : "\\u");
            for (int shift = code > 0xFFFF ? 28 : 12; shift >= 0; shift -= 4) {
                visible.push_back(kHex[(code >> shift) & 0xF]);
            }
        } else {
            visible.append(text.substr(0, character.bytes));
        }
        text.remove_prefix(character.bytes);
    }
    return visible;
}

std::vector<std::string> WrapText(std::string_view text, size_t width) {
    std::vector<std::string> lines;
    if (width == 0) {
        width = 1;
    }
    for (;;) {
        size_t newline = text.find('\n');
        size_t before = lines.size();
        WrapLine(text.substr(0, newline), width, lines);
        if (lines.size() == before) {
            lines.emplace_back();
        }
        if (newline == std::string_view::npos) {
            break;
        }
        text.remove_prefix(newline + 1);
    }
    return lines;
}

std::string QuoteValue(std::string_view value) {
    const size_t characters = CharacterCount(value);
    std::string_view shown = value.substr(0, BytesOfCharacters(value, kQuotedCharacters));
    std::string text = "'";
    for (char c : shown) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '\n') {
            text.append("\\n");
        } else if (c == '\t') {
            text.append("\\t");
        } else if (byte < 0x20 || byte == 0x7f) {
            AppendHexByte(byte, text);
        } else {
            text.push_back(c);
        }
    }
    if (shown.size() < value.size()) {
        return text + "...' (" + std::to_string(characters) + " characters)";
    }
    return text + "'";
}

}  // namespace CommandHost
