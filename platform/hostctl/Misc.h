// String helpers of the host-control layer.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace HostCtl::Misc {

namespace Detail {
// A piece of text by pointer and length, so that a literal and a std::string both convert
// without a copy.
struct StrBuf {
    StrBuf(const char* text);
    StrBuf(const std::string& text) : data(text.data()), size(text.size()) {}
    StrBuf(std::string_view text) : data(text.data()), size(text.size()) {}
    const char* data;
    std::size_t size;
};
}  // namespace Detail

std::string StrPrintf(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string StrCat(Detail::StrBuf a, Detail::StrBuf b, Detail::StrBuf c);
std::string StrCat(Detail::StrBuf a, Detail::StrBuf b, Detail::StrBuf c, Detail::StrBuf d);
std::string StrCat(Detail::StrBuf a, Detail::StrBuf b, Detail::StrBuf c, Detail::StrBuf d,
                   Detail::StrBuf e);
std::string StrCat(Detail::StrBuf a, Detail::StrBuf b, Detail::StrBuf c, Detail::StrBuf d,
                   Detail::StrBuf e, Detail::StrBuf f);
// Appends the tokens of `text` between any of the `separators` to `out`; empty tokens are
// skipped.
void StringTokenize(std::string_view text, std::vector<std::string>& out, const char* separators);

}  // namespace HostCtl::Misc
