#include "hostctl/MacAddress.h"

namespace HostCtl::Network {

namespace {

int HexDigit(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    return -1;
}

// Exactly six pairs of hexadecimal digits separated by ':', "02:04:00:00:00:09".
bool Parse(const std::string& text, std::array<std::uint8_t, 6>& bytes) {
    if (text.size() != 17) {
        return false;
    }
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        std::size_t at = i * 3;
        int high = HexDigit(text[at]);
        int low = HexDigit(text[at + 1]);
        if (high < 0 || low < 0 || (i < 5 && text[at + 2] != ':')) {
            return false;
        }
        bytes[i] = static_cast<std::uint8_t>(high * 16 + low);
    }
    return true;
}

}  // namespace

MacAddress::MacAddress(const std::string& text) : bytes_{} {
    if (!Parse(text, bytes_)) {
        bytes_ = {};
    }
}

std::string MacAddress::GetStringAddress() const {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text(17, ':');
    for (std::size_t i = 0; i < bytes_.size(); ++i) {
        text[i * 3] = kDigits[bytes_[i] >> 4];
        text[i * 3 + 1] = kDigits[bytes_[i] & 0xf];
    }
    return text;
}

bool MacAddress::IsValid(const std::string& text) {
    std::array<std::uint8_t, 6> bytes{};
    return Parse(text, bytes);
}

}  // namespace HostCtl::Network
