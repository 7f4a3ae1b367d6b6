// The links of the namespace as NICs: which links are NICs, their records from one dump of the
// link table, the administrative state and the counters.
#include "hostsim/linux/Nics.h"

#include <linux/ethtool.h>
#include <linux/if.h>
#include <linux/if_arp.h>
#include <linux/if_link.h>
#include <linux/rtnetlink.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <map>
#include <set>

#include "hostctl/HostCtlException.h"
#include "hostsim/linux/PciNames.h"

namespace HostSim::Linux {

using HostCtl::Lib::HostCtlException;

namespace {

// The kinds of link without a bus device that stand in for a NIC; bridges, bonds, VLANs,
// tunnels and the like are links of another sort.
constexpr const char* kPseudoNicKinds[] = {"veth", "tun", "dummy"};

// What the link table says of one link.
struct Link {
    int index = 0;
    unsigned type = 0;
    unsigned flags = 0;
    std::string name;
    std::string kind;
    std::string mac;
    std::uint32_t mtu = 0;
    int master = 0;
    std::string parentBus;     // the bus of the device behind the link, empty for none
    std::string parentDevice;  // that device's name on its bus
    const nlattr* stats = nullptr;
};

std::string MacText(const nlattr* attribute) {
    if (attribute == nullptr) {
        return {};
    }
    constexpr char kDigits[] = "0123456789abcdef";
    const auto* bytes = static_cast<const unsigned char*>(mnl_attr_get_payload(attribute));
    const std::size_t length = mnl_attr_get_payload_len(attribute);
    std::string text(length == 0 ? 0 : length * 3 - 1, ':');
    for (std::size_t i = 0; i < length; ++i) {
        text[i * 3] = kDigits[bytes[i] >> 4];
        text[i * 3 + 1] = kDigits[bytes[i] & 0xf];
    }
    return text;
}

std::string Text(const nlattr* attribute) {
    return attribute != nullptr ? mnl_attr_get_str(attribute) : std::string();
}

Link ReadLink(const nlmsghdr& message) {
    const auto* info = static_cast<const ifinfomsg*>(mnl_nlmsg_get_payload(&message));
    const auto attributes = ParseAttributes(message, sizeof(ifinfomsg), IFLA_MAX);
    Link link;
    link.index = info->ifi_index;
    link.type = info->ifi_type;
    link.flags = info->ifi_flags;
    link.name = Text(attributes[IFLA_IFNAME]);
    link.mac = MacText(attributes[IFLA_ADDRESS]);
    if (attributes[IFLA_MTU] != nullptr) {
        link.mtu = mnl_attr_get_u32(attributes[IFLA_MTU]);
    }
    if (attributes[IFLA_MASTER] != nullptr) {
        link.master = static_cast<int>(mnl_attr_get_u32(attributes[IFLA_MASTER]));
    }
    link.kind = Text(ParseNested(attributes[IFLA_LINKINFO], IFLA_INFO_MAX)[IFLA_INFO_KIND]);
    link.parentBus = Text(attributes[IFLA_PARENT_DEV_BUS_NAME]);
    link.parentDevice = Text(attributes[IFLA_PARENT_DEV_NAME]);
    link.stats = attributes[IFLA_STATS64];
    return link;
}

bool IsNic(const Link& link) {
    if (link.type != ARPHRD_ETHER) {
        return false;
    }
    if (!link.parentDevice.empty() || link.kind.empty()) {
        return true;
    }
    return std::find_if(std::begin(kPseudoNicKinds), std::end(kPseudoNicKinds),
                        [&link](const char* kind) { return link.kind == kind; }) !=
           std::end(kPseudoNicKinds);
}

// Asks for links without their counters unless they are wanted: a listing need not carry them.
void PutLinkRequest(Message& request, bool withStats) {
    auto* info = request.PutExtra<ifinfomsg>();
    info->ifi_family = AF_UNSPEC;
    if (!withStats) {
        mnl_attr_put_u32(request.Header(), IFLA_EXT_MASK, RTEXT_FILTER_SKIP_STATS);
    }
}

// "0000:02:00.0": a PCI address as the driver gives it for its bus.
bool IsPciAddress(const std::string& text) {
    unsigned domain = 0;
    unsigned bus = 0;
    unsigned slot = 0;
    unsigned function = 0;
    char end = 0;
    return std::sscanf(text.c_str(), "%x:%x:%x.%x%c", &domain, &bus, &slot, &function, &end) == 4;
}

// The record of a NIC, from its link and its driver.
std::unique_ptr<NicRecord> MakeRecord(const Link& link) {
    auto record = std::make_unique<NicRecord>();
    record->name = link.name;
    record->adminUp = (link.flags & IFF_UP) != 0;
    record->cableConnected = (link.flags & IFF_LOWER_UP) != 0;
    record->mac = link.mac;
    record->mtu = link.mtu;
    // A pseudo NIC's kind (veth, tun, dummy) is its driver's name. The driver of a bus device,
    // and its bus, are asked of the driver, one ioctl a NIC; the rest of what the driver tells of
    // itself is asked when wanted (GetDriverInfo).
    record->driver = link.kind;
    if (!link.parentDevice.empty() || link.kind.empty()) {
        ethtool_drvinfo driver{};
        driver.cmd = ETHTOOL_GDRVINFO;
        try {
            EthtoolIoctl(link.name, &driver);
            record->driver = driver.driver;
            record->busInfo = driver.bus_info;
        } catch (const HostCtlException&) {
            // A link whose driver answers no ethtool request still is what the link table says.
        }
    }
    if (!link.parentDevice.empty() && IsPciAddress(record->busInfo)) {
        record->pciAddress = record->busInfo;
        const PciDeviceNames names = PciNames(record->pciAddress);
        record->pciVendor = names.vendor;
        record->pciDevice = names.device;
    } else if (!link.parentDevice.empty()) {
        record->descriptor =
            (link.parentBus == "usb"                                    ? "USB-NIC:"
             : link.parentBus == "acpi" || link.parentBus == "platform" ? "ACPI-NIC:"
                                                                        : "PhyDev:") +
            link.parentBus + ":" + link.parentDevice;
    } else {
        record->descriptor = "PhyDev:Linux:" + (link.kind.empty() ? record->driver : link.kind);
    }
    return record;
}

// Speed and duplex of every link that reports them, from one dump; or of one link.
void ReadLinkModes(Ethtool& ethtool, const std::string& name,
                   const std::map<std::string, NicRecord*>& records) {
    Message request = ethtool.Request(ETHTOOL_MSG_LINKMODES_GET, name);
    try {
        ethtool.Exchange(request, [&records](const nlmsghdr& reply) {
            const auto attributes = Ethtool::Attributes(reply, ETHTOOL_A_LINKMODES_MAX);
            const auto found =
                records.find(Ethtool::LinkName(attributes[ETHTOOL_A_LINKMODES_HEADER]));
            if (found == records.end()) {
                return;
            }
            if (const nlattr* speed = attributes[ETHTOOL_A_LINKMODES_SPEED]) {
                const std::uint32_t value = mnl_attr_get_u32(speed);
                found->second->speed =
                    value == static_cast<std::uint32_t>(SPEED_UNKNOWN) ? 0 : value;
            }
            if (const nlattr* duplex = attributes[ETHTOOL_A_LINKMODES_DUPLEX]) {
                const std::uint8_t value = mnl_attr_get_u8(duplex);
                found->second->duplex = value == DUPLEX_FULL ? 1 : value == DUPLEX_HALF ? 2 : 0;
            }
        });
    } catch (const HostCtlException&) {
        // A driver without link settings has no speed or duplex to show.
    }
}

}  // namespace

NetlinkSocket& Nics::Route() {
    if (!route_) {
        route_ = std::make_unique<NetlinkSocket>(NETLINK_ROUTE);
    }
    return *route_;
}

Ethtool& Nics::EthtoolFamily() {
    if (!ethtool_) {
        ethtool_ = std::make_unique<Ethtool>();
    }
    return *ethtool_;
}

namespace {

// The NICs among the links of one dump, with what `keep` lets through.
template <class Keep>
std::vector<std::unique_ptr<NicRecord>> NicsOfDump(NetlinkSocket& route, Keep keep) {
    Message request(RTM_GETLINK, NLM_F_DUMP);
    PutLinkRequest(request, false);
    std::vector<Link> links;
    route.Exchange(request, [&links](const nlmsghdr& reply) { links.push_back(ReadLink(reply)); });
    std::map<int, const Link*> byIndex;
    for (const Link& link : links) {
        byIndex[link.index] = &link;
    }
    std::vector<std::unique_ptr<NicRecord>> records;
    for (const Link& link : links) {
        const auto master = byIndex.find(link.master);
        if (IsNic(link) && keep(link, master == byIndex.end() ? nullptr : master->second)) {
            records.push_back(MakeRecord(link));
        }
    }
    return records;
}

}  // namespace

// Speed and duplex are what a link negotiated, and a NIC shows them only while its link is up:
// the others are not asked, and without one up the ethtool family is not opened at all.
std::vector<std::unique_ptr<NicRecord>> Nics::WithLinkModes(
    std::vector<std::unique_ptr<NicRecord>> records) {
    std::map<std::string, NicRecord*> linkedByName;
    for (const auto& record : records) {
        if (record->LinkUp()) {
            linkedByName[record->name] = record.get();
        }
    }
    if (linkedByName.size() == 1) {
        ReadLinkModes(EthtoolFamily(), linkedByName.begin()->first, linkedByName);
    } else if (!linkedByName.empty()) {
        ReadLinkModes(EthtoolFamily(), {}, linkedByName);
    }
    return records;
}

std::vector<std::unique_ptr<NicRecord>> Nics::LoadAll() {
    return WithLinkModes(NicsOfDump(Route(), [](const Link&, const Link*) { return true; }));
}

std::vector<std::unique_ptr<NicRecord>> Nics::LoadUplinks() {
    return WithLinkModes(NicsOfDump(Route(), [](const Link&, const Link* master) {
        return master != nullptr && master->kind == "bridge";
    }));
}

std::optional<NicRecord> Nics::Load(const std::string& name) {
    if (name.empty() || name.size() >= IFNAMSIZ) {
        return std::nullopt;
    }
    Message request(RTM_GETLINK, 0);
    PutLinkRequest(request, false);
    mnl_attr_put_strz(request.Header(), IFLA_IFNAME, name.c_str());
    std::optional<Link> link;
    try {
        Route().Exchange(request, [&link](const nlmsghdr& reply) { link = ReadLink(reply); });
    } catch (const KernelError& error) {
        if (error.Error() == ENODEV) {
            return std::nullopt;
        }
        throw;
    }
    if (!link || !IsNic(*link)) {
        return std::nullopt;
    }
    std::vector<std::unique_ptr<NicRecord>> records;
    records.push_back(MakeRecord(*link));
    return std::move(*WithLinkModes(std::move(records)).front());
}

void Nics::SetAdminState(const std::string& name, bool up) {
    Message request(RTM_NEWLINK, 0);
    auto* info = request.PutExtra<ifinfomsg>();
    info->ifi_family = AF_UNSPEC;
    info->ifi_change = IFF_UP;
    info->ifi_flags = up ? IFF_UP : 0;
    mnl_attr_put_strz(request.Header(), IFLA_IFNAME, name.c_str());
    Route().Exchange(request);
}

void Nics::GetStats(const std::string& name, HostCtl::Network::PnicStats& stats) {
    Message request(RTM_GETLINK, 0);
    PutLinkRequest(request, true);
    mnl_attr_put_strz(request.Header(), IFLA_IFNAME, name.c_str());
    bool found = false;
    Route().Exchange(request, [&](const nlmsghdr& reply) {
        const Link link = ReadLink(reply);
        if (link.stats == nullptr ||
            mnl_attr_get_payload_len(link.stats) < sizeof(rtnl_link_stats64)) {
            return;
        }
        rtnl_link_stats64 counters{};
        std::memcpy(&counters, mnl_attr_get_payload(link.stats), sizeof counters);
        found = true;
        stats = {};
        stats.rxPackets = counters.rx_packets;
        stats.txPackets = counters.tx_packets;
        stats.rxBytes = counters.rx_bytes;
        stats.txBytes = counters.tx_bytes;
        stats.rxErrors = counters.rx_errors;
        stats.txErrors = counters.tx_errors;
        stats.rxDropped = counters.rx_dropped;
        stats.txDropped = counters.tx_dropped;
        stats.rxMulticast = counters.multicast;
        stats.rxLengthErrors = counters.rx_length_errors;
        stats.rxOverErrors = counters.rx_over_errors;
        stats.rxCrcErrors = counters.rx_crc_errors;
        stats.rxFrameErrors = counters.rx_frame_errors;
        stats.rxFifoErrors = counters.rx_fifo_errors;
        stats.rxMissedErrors = counters.rx_missed_errors;
        stats.txAbortedErrors = counters.tx_aborted_errors;
        stats.txFifoErrors = counters.tx_fifo_errors;
        stats.txCarrierErrors = counters.tx_carrier_errors;
        stats.txHeartbeatErrors = counters.tx_heartbeat_errors;
        stats.txWindowErrors = counters.tx_window_errors;
    });
    if (!found) {
        throw HostCtlException("The kernel keeps no counters for " + name);
    }
}

}  // namespace HostSim::Linux
