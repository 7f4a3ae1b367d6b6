// IPv4 and IPv6 addresses in text, formatted by hand (and a prefix length's netmask): inet_ntop
// goes through sprintf, which a listing of many routes, addresses or sockets feels. Header-only,
// for the host library and the live host's module alike.
#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace HostSim {

// `value` in host byte order: 0xc0000201 is "192.0.2.1".
inline std::string Ipv4Text(std::uint32_t value) {
    char text[16];
    char* end = text;
    for (int shift = 24; shift >= 0; shift -= 8) {
        const unsigned part = (value >> shift) & 0xff;
        if (part >= 100) {
            *end++ = static_cast<char>('0' + part / 100);
        }
        if (part >= 10) {
            *end++ = static_cast<char>('0' + part / 10 % 10);
        }
        *end++ = static_cast<char>('0' + part % 10);
        *end++ = '.';
    }
    return std::string(text, end - 1);
}

// The 16 bytes of an IPv6 address in the text inet_ntop gives: hexadecimal groups without
// leading zeros, the first longest run of two or more zero groups as "::", and the last four
// bytes of an IPv4-mapped or IPv4-compatible address in dotted quads.
inline std::string Ipv6Text(const unsigned char* bytes) {
    std::array<unsigned, 8> groups{};
    for (std::size_t i = 0; i < groups.size(); ++i) {
        groups[i] = bytes[2 * i] << 8 | bytes[2 * i + 1];
    }
    int runStart = -1;
    int runLength = 0;
    for (int i = 0; i < 8;) {
        int length = 0;
        while (i + length < 8 && groups[i + length] == 0) {
            ++length;
        }
        if (length >= 2 && length > runLength) {
            runStart = i;
            runLength = length;
        }
        i += length > 0 ? length : 1;
    }
    static constexpr char kHex[] = "0123456789abcdef";
    char text[46];
    char* end = text;
    for (int i = 0; i < 8; ++i) {
        if (runStart >= 0 && i >= runStart && i < runStart + runLength) {
            if (i == runStart) {
                *end++ = ':';
            }
            continue;
        }
        if (i != 0) {
            *end++ = ':';
        }
        if (i == 6 && runStart == 0 &&
            (runLength == 6 || (runLength == 5 && groups[5] == 0xffff))) {
            const std::string quad =
                Ipv4Text(static_cast<std::uint32_t>(groups[6]) << 16 | groups[7]);
            return std::string(text, end) + quad;
        }
        bool leading = true;
        for (int shift = 12; shift >= 0; shift -= 4) {
            const unsigned digit = (groups[i] >> shift) & 0xf;
            if (digit != 0 || !leading || shift == 0) {
                *end++ = kHex[digit];
                leading = false;
            }
        }
    }
    if (runStart >= 0 && runStart + runLength == 8) {
        *end++ = ':';
    }
    return std::string(text, end);
}

// The netmask of a prefix length in host byte order: 24 is 0xffffff00; a length over 32 is 32.
constexpr std::uint32_t Ipv4Netmask(unsigned prefixLength) {
    return prefixLength == 0 ? 0
                             : ~std::uint32_t{0} << (32 - (prefixLength < 32 ? prefixLength : 32));
}

}  // namespace HostSim
