// An IPv4 address in dotted-quad text, formatted by hand (and a prefix length's netmask): inet_ntop
// goes through sprintf, which a listing of many routes or addresses feels. Header-only, for the
// host library and the live host's module alike.
#pragma once

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

// The netmask of a prefix length in host byte order: 24 is 0xffffff00; a length over 32 is 32.
constexpr std::uint32_t Ipv4Netmask(unsigned prefixLength) {
    return prefixLength == 0 ? 0
                             : ~std::uint32_t{0} << (32 - (prefixLength < 32 ? prefixLength : 32));
}

}  // namespace HostSim
