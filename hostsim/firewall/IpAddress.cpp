// IP address and network value types, parsed and printed with the C library's own routines.
#include "hostctl/IpAddress.h"

#include <arpa/inet.h>

#include <algorithm>
#include <charconv>
#include <optional>

#include "hostctl/HostCtlException.h"
#include "hostsim/values/AddressText.h"

namespace HostCtl::Network {
namespace {

constexpr unsigned int kIpv4Bits = 32;
constexpr unsigned int kIpv6Bits = 128;

std::optional<std::uint32_t> ParseIpv4(const std::string& text) {
    in_addr address{};
    if (inet_pton(AF_INET, text.c_str(), &address) != 1) {
        return std::nullopt;
    }
    return ntohl(address.s_addr);
}

std::optional<std::array<std::uint8_t, 16>> ParseIpv6(const std::string& text) {
    std::array<std::uint8_t, 16> bytes{};
    if (inet_pton(AF_INET6, text.c_str(), bytes.data()) != 1) {
        return std::nullopt;
    }
    return bytes;
}

// Splits "address/length" where the length is a decimal of at most `maxBits`.
std::optional<std::pair<std::string, unsigned int>> SplitPrefix(const std::string& text,
                                                                unsigned int maxBits) {
    const auto slash = text.find('/');
    if (slash == std::string::npos || slash + 1 == text.size()) {
        return std::nullopt;
    }
    unsigned int length = 0;
    const char* first = text.data() + slash + 1;
    const char* last = text.data() + text.size();
    const auto [end, error] = std::from_chars(first, last, length);
    if (error != std::errc() || end != last || length > maxBits) {
        return std::nullopt;
    }
    return std::make_pair(text.substr(0, slash), length);
}

[[noreturn]] void Refuse(const std::string& text, const char* what) {
    throw HostCtl::Lib::HostCtlException("'" + text + "' is not a valid " + what);
}

}  // namespace

Ipv4Address::Ipv4Address(const std::string& text) {
    const auto value = ParseIpv4(text);
    if (!value) {
        Refuse(text, "IPv4 address");
    }
    value_ = *value;
}

Ipv4Address Ipv4Address::FromValue(std::uint32_t value) {
    Ipv4Address address;
    address.value_ = value;
    return address;
}

std::string Ipv4Address::GetStringAddress() const {
    return HostSim::Ipv4Text(value_);
}

bool Ipv4Address::IsValidAddress(const std::string& text) {
    return ParseIpv4(text).has_value();
}

Ipv6Address::Ipv6Address(const std::string& text) {
    const auto bytes = ParseIpv6(text);
    if (!bytes) {
        Refuse(text, "IPv6 address");
    }
    bytes_ = *bytes;
}

std::string Ipv6Address::GetStringAddress() const {
    return HostSim::Ipv6Text(bytes_.data());
}

bool Ipv6Address::IsValidAddress(const std::string& text) {
    return ParseIpv6(text).has_value();
}

Ipv4Network::Ipv4Network(const std::string& text) {
    const auto parts = SplitPrefix(text, kIpv4Bits);
    if (!parts || !Ipv4Address::IsValidAddress(parts->first)) {
        Refuse(text, "IPv4 network: expected an address and a prefix length, 192.0.2.0/24");
    }
    network_ = Ipv4Address(parts->first);
    prefixLength_ = parts->second;
    netmask_ = Ipv4Address::FromValue(HostSim::Ipv4Netmask(prefixLength_));
}

Ipv4Network Ipv4Network::FromValue(std::uint32_t network, unsigned int prefixLength) {
    Ipv4Network result;
    result.network_ = Ipv4Address::FromValue(network);
    result.netmask_ = Ipv4Address::FromValue(HostSim::Ipv4Netmask(prefixLength));
    result.prefixLength_ = prefixLength;
    return result;
}

std::string Ipv4Network::GetStringAddress() const {
    return network_.GetStringAddress() + "/" + std::to_string(prefixLength_);
}

bool Ipv4Network::IsValidAddressAndNetmask(const std::string& text) {
    const auto parts = SplitPrefix(text, kIpv4Bits);
    return parts && Ipv4Address::IsValidAddress(parts->first);
}

Ipv6Network::Ipv6Network(const std::string& text) {
    const auto parts = SplitPrefix(text, kIpv6Bits);
    if (!parts || !Ipv6Address::IsValidAddress(parts->first)) {
        Refuse(text, "IPv6 network: expected an address and a prefix length, 2001:db8::/32");
    }
    address_ = Ipv6Address(parts->first);
    prefixLength_ = parts->second;
}

std::string Ipv6Network::GetStringAddress() const {
    return address_.GetStringAddress() + "/" + std::to_string(prefixLength_);
}

bool Ipv6Network::IsValidAddressAndNetmask(const std::string& text) {
    const auto parts = SplitPrefix(text, kIpv6Bits);
    return parts && Ipv6Address::IsValidAddress(parts->first);
}

Ipv6Address Ipv6Network::NetmaskFromNumber(unsigned int prefixLength) {
    std::array<std::uint8_t, 16> bytes{};
    for (unsigned int bit = 0; bit < std::min(prefixLength, kIpv6Bits); ++bit) {
        bytes[bit / 8] |= static_cast<std::uint8_t>(0x80u >> (bit % 8));
    }
    char text[INET6_ADDRSTRLEN];
    inet_ntop(AF_INET6, bytes.data(), text, sizeof text);
    return Ipv6Address(text);
}

}  // namespace HostCtl::Network
