// A six-byte Ethernet address.
#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace HostCtl::Network {

class MacAddress {
public:
    MacAddress() : bytes_{} {}
    // Text of six hexadecimal pairs separated by ':'; text that is not valid gives all zeros.
    explicit MacAddress(const std::string& text);

    // Lower-case hexadecimal pairs separated by ':', "02:04:00:00:00:09".
    std::string GetStringAddress() const;
    static bool IsValid(const std::string& text);

    const std::array<std::uint8_t, 6>& GetBytes() const { return bytes_; }
    bool operator==(const MacAddress& other) const = default;

private:
    std::array<std::uint8_t, 6> bytes_;
};

}  // namespace HostCtl::Network
