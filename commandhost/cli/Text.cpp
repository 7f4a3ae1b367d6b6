#include "commandhost/cli/Text.h"

namespace CommandHost {

namespace {

// Bytes of `text` that hold its first `columns` characters.
size_t BytesOfColumns(std::string_view text, size_t columns) {
    size_t bytes = 0;
    for (size_t seen = 0; bytes < text.size(); ++bytes) {
        if ((static_cast<unsigned char>(text[bytes]) & 0xC0) != 0x80 && seen++ == columns) {
            break;
        }
    }
    return bytes;
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
            wordWidth -= width;
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

size_t DisplayWidth(std::string_view text) {
    size_t width = 0;
    for (char c : text) {
        if ((static_cast<unsigned char>(c) & 0xC0) != 0x80) {
            ++width;
        }
    }
    return width;
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
    const size_t characters = DisplayWidth(value);
    std::string_view shown = value.substr(0, BytesOfColumns(value, kQuotedCharacters));
    std::string text = "'";
    for (char c : shown) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '\n') {
            text.append("\\n");
        } else if (c == '\t') {
            text.append("\\t");
        } else if (byte < 0x20 || byte == 0x7f) {
            constexpr char kHex[] = "0123456789abcdef";
            text.append("\\x").push_back(kHex[byte >> 4]);
            text.push_back(kHex[byte & 0xf]);
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
