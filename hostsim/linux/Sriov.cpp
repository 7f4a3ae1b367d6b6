// SR-IOV on the live host: a NIC whose PCI device has virtual functions enabled, read from the
// device's directory under /sys/bus/pci/devices (which, unlike /sys/class/net, doesn't depend
// on the network namespace), and each function's counters from the link table.
#include <fcntl.h>
#include <linux/if_link.h>
#include <linux/rtnetlink.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>

#include "hostctl/HostCtlException.h"
#include "hostsim/linux/Nics.h"

namespace HostSim::Linux {

using HostCtl::Lib::HostCtlException;
using HostCtl::Network::SriovNicVFInfo;
using HostCtl::Network::SriovNicVFStats;

namespace {

constexpr char kPciDevices[] = "/sys/bus/pci/devices/";

// "0000:3b:00.0" and nothing else, so that an address names one directory of the bus.
bool IsPciAddress(const std::string& address) {
    unsigned domain = 0;
    unsigned bus = 0;
    unsigned slot = 0;
    unsigned function = 0;
    char end = 0;
    return !address.empty() && std::all_of(address.begin(), address.end(), [](char c) {
        return std::isxdigit(static_cast<unsigned char>(c)) || c == ':' || c == '.';
    }) && std::sscanf(address.c_str(), "%x:%x:%x.%x%c", &domain, &bus, &slot, &function, &end) == 4;
}

// The number of virtual functions enabled on the device; 0 for a device without SR-IOV.
unsigned EnabledFunctions(const std::string& address) {
    if (!IsPciAddress(address)) {
        return 0;
    }
    const std::string path = kPciDevices + address + "/sriov_numvfs";
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    if (file < 0) {
        return 0;
    }
    char text[16] = {};
    const ssize_t read = ::read(file, text, sizeof text - 1);
    close(file);
    unsigned count = 0;
    return read > 0 && std::sscanf(text, "%u", &count) == 1 ? count : 0;
}

// The PCI address of the device that a virtual function's link names ("../0000:3b:02.1").
std::string LinkedAddress(const std::string& link) {
    char target[256];
    const ssize_t length = readlink(link.c_str(), target, sizeof target - 1);
    if (length <= 0) {
        return {};
    }
    const std::string path(target, static_cast<std::size_t>(length));
    const std::string address = path.substr(path.rfind('/') + 1);
    return IsPciAddress(address) ? address : std::string();
}

std::uint64_t U64(const nlattr* attribute) {
    return attribute != nullptr ? mnl_attr_get_u64(attribute) : 0;
}

}  // namespace

std::vector<std::unique_ptr<NicRecord>> Nics::LoadSriovNics() {
    std::vector<std::unique_ptr<NicRecord>> nics = LoadAll();
    nics.erase(std::remove_if(nics.begin(), nics.end(),
                              [](const std::unique_ptr<NicRecord>& nic) {
                                  return EnabledFunctions(nic->pciAddress) == 0;
                              }),
               nics.end());
    return nics;
}

// A function whose link the kernel has already taken away (its count is being lowered) is
// left out. No owner of a function is known on Linux: that field stays empty.
std::vector<SriovNicVFInfo> Nics::GetVirtualFunctions(const std::string& name) {
    const auto nic = Load(name);
    if (!nic) {
        throw HostCtlException("There is no NIC named " + name + " on this host");
    }
    const unsigned count = EnabledFunctions(nic->pciAddress);
    if (count == 0) {
        throw HostCtlException("SR-IOV is not enabled on NIC " + name);
    }
    std::vector<SriovNicVFInfo> functions;
    for (unsigned id = 0; id < count && id <= 0xff; ++id) {
        const std::string address =
            LinkedAddress(kPciDevices + nic->pciAddress + "/virtfn" + std::to_string(id));
        if (address.empty()) {
            continue;
        }
        SriovNicVFInfo function;
        function.vfId = static_cast<std::uint8_t>(id);
        function.hexPciAddress = address;
        struct stat driver {};
        function.active = lstat((kPciDevices + address + "/driver").c_str(), &driver) == 0;
        functions.push_back(std::move(function));
    }
    return functions;
}

// The kernel counts each function's packets and bytes each way, its received multicast and
// broadcast packets, and its drops. Received unicast packets are what the multicast and
// broadcast ones leave of all received packets. The kernel tells no unicast, multicast or
// broadcast share of bytes or of transmitted packets, nor LRO, TSO or transmit errors: those
// fields stay zero.
void Nics::GetVirtualFunctionStats(const std::string& name, int vfId, SriovNicVFStats& stats) {
    Message request(RTM_GETLINK, 0);
    request.PutExtra<ifinfomsg>()->ifi_family = AF_UNSPEC;
    mnl_attr_put_strz(request.Header(), IFLA_IFNAME, name.c_str());
    mnl_attr_put_u32(request.Header(), IFLA_EXT_MASK, RTEXT_FILTER_VF);
    bool found = false;
    Route().Exchange(request, [&](const nlmsghdr& reply) {
        const auto attributes = ParseAttributes(reply, sizeof(ifinfomsg), IFLA_MAX);
        for (const nlattr* info : NestedList(attributes[IFLA_VFINFO_LIST])) {
            const auto fields = ParseNested(info, IFLA_VF_MAX);
            if (fields[IFLA_VF_MAC] == nullptr || fields[IFLA_VF_STATS] == nullptr ||
                mnl_attr_get_payload_len(fields[IFLA_VF_MAC]) < sizeof(ifla_vf_mac)) {
                continue;
            }
            ifla_vf_mac mac{};
            std::memcpy(&mac, mnl_attr_get_payload(fields[IFLA_VF_MAC]), sizeof mac);
            if (vfId < 0 || mac.vf != static_cast<std::uint32_t>(vfId)) {
                continue;
            }
            const auto counters = ParseNested(fields[IFLA_VF_STATS], IFLA_VF_STATS_MAX);
            const std::uint64_t received = U64(counters[IFLA_VF_STATS_RX_PACKETS]);
            const std::uint64_t multicast = U64(counters[IFLA_VF_STATS_MULTICAST]);
            const std::uint64_t broadcast = U64(counters[IFLA_VF_STATS_BROADCAST]);
            stats = {};
            stats.rxMulticastPkts = multicast;
            stats.rxBroadcastPkts = broadcast;
            // The driver may read its counters one by one: the difference never goes below 0.
            stats.rxUnicastPkts = received - std::min(received, multicast + broadcast);
            stats.rxOutOfBufferDrops = U64(counters[IFLA_VF_STATS_RX_DROPPED]);
            stats.txDiscards = U64(counters[IFLA_VF_STATS_TX_DROPPED]);
            found = true;
        }
    });
    if (!found) {
        throw HostCtlException("NIC " + name + " has no virtual function " + std::to_string(vfId));
    }
}

}  // namespace HostSim::Linux
