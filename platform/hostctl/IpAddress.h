// IP addresses and networks as the host-control layer passes them. A constructor from text
// throws HostCtlException for text it can't parse; callers that want their own message test the
// text with the static checks first.
#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace HostCtl::Network {

class IpAddress {
public:
    virtual ~IpAddress() = default;
    virtual std::string GetStringAddress() const = 0;
};

class Ipv4Address : public IpAddress {
public:
    Ipv4Address() = default;
    // Dotted-quad text, "192.0.2.1".
    explicit Ipv4Address(const std::string& text);

    std::string GetStringAddress() const override;
    // In host byte order.
    static Ipv4Address FromValue(std::uint32_t value);
    std::uint32_t GetValue() const { return value_; }
    bool operator==(const Ipv4Address& other) const { return value_ == other.value_; }

    static bool IsValidAddress(const std::string& text);

private:
    std::uint32_t value_ = 0;
};

class Ipv6Address : public IpAddress {
public:
    Ipv6Address() = default;
    // Any text form of RFC 4291, "2001:db8::1".
    explicit Ipv6Address(const std::string& text);

    // The canonical text form of RFC 5952.
    std::string GetStringAddress() const override;
    const std::array<std::uint8_t, 16>& GetBytes() const { return bytes_; }
    bool operator==(const Ipv6Address& other) const { return bytes_ == other.bytes_; }

    static bool IsValidAddress(const std::string& text);

private:
    std::array<std::uint8_t, 16> bytes_{};
};

class Ipv4Network {
public:
    Ipv4Network() = default;
    // Prefix form, "192.0.2.0/24".
    explicit Ipv4Network(const std::string& text);
    Ipv4Network(const Ipv4Network&) = default;
    Ipv4Network& operator=(const Ipv4Network&) = default;

    // A network in host byte order and its prefix length, 0 to 32.
    static Ipv4Network FromValue(std::uint32_t network, unsigned int prefixLength);

    const Ipv4Address& GetNetwork() const { return network_; }
    const Ipv4Address& GetNetmask() const { return netmask_; }
    unsigned int GetPrefixLength() const { return prefixLength_; }
    // Prefix form, "192.0.2.0/24".
    std::string GetStringAddress() const;
    bool operator==(const Ipv4Network& other) const = default;

    // An address and a prefix length of 0 to 32, "192.0.2.0/24".
    static bool IsValidAddressAndNetmask(const std::string& text);

private:
    Ipv4Address network_;
    Ipv4Address netmask_;
    unsigned int prefixLength_ = 0;
};

class Ipv6Network {
public:
    Ipv6Network() = default;
    // Prefix form, "2001:db8::/32".
    explicit Ipv6Network(const std::string& text);
    Ipv6Network(const Ipv6Network&) = default;
    Ipv6Network& operator=(const Ipv6Network&) = default;

    const Ipv6Address& GetAddress() const { return address_; }
    unsigned int GetNetmask() const { return prefixLength_; }  // the prefix length
    // Prefix form with the canonical address, "2001:db8::/32".
    std::string GetStringAddress() const;
    bool operator==(const Ipv6Network& other) const = default;

    // An address and a prefix length of 0 to 128, "2001:db8::5/64".
    static bool IsValidAddressAndNetmask(const std::string& text);

    // How an interface's address came and where it stands: the type is 0 static, 7 learnt by
    // stateless autoconfiguration, 9 leased by DHCPv6; the status 1 preferred, 2 tentative,
    // 3 duplicated, 5 deprecated. An address made from text is static and preferred.
    static constexpr int kTypeStatic = 0;
    static constexpr int kTypeAutoconf = 7;
    static constexpr int kTypeDhcp = 9;
    static constexpr int kStatusPreferred = 1;
    static constexpr int kStatusTentative = 2;
    static constexpr int kStatusDuplicated = 3;
    static constexpr int kStatusDeprecated = 5;
    int GetIpv6AddressType() const { return type_; }
    int GetIpv6AddressStatus() const { return status_; }
    void SetIpv6AddressType(int type) { type_ = type; }
    void SetIpv6AddressStatus(int status) { status_ = status; }

    // Routing: the mask of a prefix length, "ffff:ffff:ffff::" for 48; lengths above 128
    // count as 128.
    static Ipv6Address NetmaskFromNumber(unsigned int prefixLength);

private:
    Ipv6Address address_;
    unsigned int prefixLength_ = 0;
    int type_ = kTypeStatic;
    int status_ = kStatusPreferred;
};

}  // namespace HostCtl::Network
