#include "hostctl/Misc.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace HostCtl::Misc {

namespace Detail {
StrBuf::StrBuf(const char* text) : data(text), size(text != nullptr ? std::strlen(text) : 0) {}
}  // namespace Detail

namespace {

std::string Join(std::initializer_list<Detail::StrBuf> pieces) {
    std::size_t size = 0;
    for (const auto& piece : pieces) {
        size += piece.size;
    }
    std::string joined;
    joined.reserve(size);
    for (const auto& piece : pieces) {
        joined.append(piece.data, piece.size);
    }
    return joined;
}

}  // namespace

// Formats once into a buffer on the stack, which holds nearly every text asked for, and again
// at the size measured only for a longer one.
std::string StrPrintf(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    va_list again;
    va_copy(again, arguments);
    char buffer[256];
    const int size = std::vsnprintf(buffer, sizeof buffer, format, arguments);
    va_end(arguments);
    std::string text;
    if (size > 0 && static_cast<std::size_t>(size) < sizeof buffer) {
        text.assign(buffer, static_cast<std::size_t>(size));
    } else if (size > 0) {
        text.resize(static_cast<std::size_t>(size));
        std::vsnprintf(text.data(), text.size() + 1, format, again);
    }
    va_end(again);
    return text;
}

std::string StrCat(Detail::StrBuf a, Detail::StrBuf b, Detail::StrBuf c) {
    return Join({a, b, c});
}

std::string StrCat(Detail::StrBuf a, Detail::StrBuf b, Detail::StrBuf c, Detail::StrBuf d) {
    return Join({a, b, c, d});
}

std::string StrCat(Detail::StrBuf a, Detail::StrBuf b, Detail::StrBuf c, Detail::StrBuf d,
                   Detail::StrBuf e) {
    return Join({a, b, c, d, e});
}

std::string StrCat(Detail::StrBuf a, Detail::StrBuf b, Detail::StrBuf c, Detail::StrBuf d,
                   Detail::StrBuf e, Detail::StrBuf f) {
    return Join({a, b, c, d, e, f});
}

void StringTokenize(std::string_view text, std::vector<std::string>& out, const char* separators) {
    std::size_t position = 0;
    while (position < text.size()) {
        std::size_t start = text.find_first_not_of(separators, position);
        if (start == std::string_view::npos) {
            break;
        }
        std::size_t end = text.find_first_of(separators, start);
        if (end == std::string_view::npos) {
            end = text.size();
        }
        out.emplace_back(text.substr(start, end - start));
        position = end;
    }
}

}  // namespace HostCtl::Misc
