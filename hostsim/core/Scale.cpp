#include <algorithm>

#include "hostctl/HostCtlException.h"
#include "hostctl/MacAddress.h"
#include "hostctl/Misc.h"
#include "hostsim/core/Subject.h"

namespace HostSim {

namespace {

// Splits "hwnic12" into "hwnic" and 12; false when the name doesn't end in a number.
bool SplitNumber(const std::string& name, std::string& prefix, unsigned long& number) {
    std::size_t digits = name.size();
    while (digits > 0 && name[digits - 1] >= '0' && name[digits - 1] <= '9') {
        --digits;
    }
    if (digits == name.size() || name.size() - digits > 9) {
        return false;
    }
    prefix = name.substr(0, digits);
    number = std::stoul(name.substr(digits));
    return true;
}

}  // namespace

Scale::Scale(const Json& profile, unsigned copies) : copies_(copies) {
    if (copies == 0) {
        throw HostCtl::Lib::HostCtlException("The scale must be at least 1");
    }
    CollectNames(profile);
}

void Scale::CollectNames(const Json& value) {
    if (value.is_array()) {
        for (const auto& element : value) {
            CollectNames(element);
        }
        return;
    }
    if (!value.is_object()) {
        return;
    }
    for (const auto& [key, member] : value.items()) {
        std::string prefix;
        unsigned long number = 0;
        if (key == "name" && member.is_string() && SplitNumber(member, prefix, number)) {
            auto& stride = strides_[prefix];
            stride = std::max(stride, number + 1);
        }
        CollectNames(member);
    }
}

std::string Scale::Name(const std::string& name, unsigned copy) const {
    std::string prefix;
    unsigned long number = 0;
    if (copy == 0 || !SplitNumber(name, prefix, number)) {
        return name;
    }
    auto stride = strides_.find(prefix);
    if (stride == strides_.end()) {
        return name;
    }
    return prefix + std::to_string(number + copy * stride->second);
}

std::string Scale::MacAddress(const std::string& address, unsigned copy) {
    const HostCtl::Network::MacAddress mac(address);
    const auto& bytes = mac.GetBytes();
    std::uint32_t device = (bytes[3] << 16 | bytes[4] << 8 | bytes[5]) + (copy << 8);
    return HostCtl::Misc::StrPrintf("%02x:%02x:%02x:%02x:%02x:%02x", bytes[0], bytes[1], bytes[2],
                                    (device >> 16) & 0xff, (device >> 8) & 0xff, device & 0xff);
}

std::string Scale::PciAddress(const std::string& address, unsigned copy) {
    std::size_t domainEnd = address.find(':');
    if (copy == 0 || domainEnd == std::string::npos) {
        return address;
    }
    return HostCtl::Misc::StrPrintf("%04x", copy) + address.substr(domainEnd);
}

}  // namespace HostSim
