// Host operations of the Kelm interfaces as a collection: look-ups, creation, removal, and
// the names of the tags.
#include "kelmctl/KelmNicInfoImpl.h"

#include <algorithm>
#include <cstdint>
#include <set>

#include "hostctl/HostCtlException.h"
#include "hostctl/Misc.h"
#include "hostsim/core/HostChoice.h"
#include "hostsim/core/Names.h"
#include "hostsim/core/Operation.h"
#include "hostsim/core/Store.h"
#include "hostsim/dvs/DvsStore.h"
#include "hostsim/kelmnic/KelmNicImpl.h"
#include "hostsim/kelmnic/LiveKelmNicImpl.h"
#include "hostsim/values/LocalMac.h"
#include "hostsim/vswitch/VswitchStore.h"

namespace KelmCtl::Network {

using HostCtl::Lib::HostCtlException;
using HostCtl::Network::ConnectionPoint;
using HostCtl::Network::KelmNic;
using HostCtl::Network::KelmNicTagType;
using HostCtl::Network::PortsetGetType;
using HostSim::PassOperation;
using HostSim::Store;

namespace {

// The tags of the host, by number from 1.
constexpr const char* kTagNames[] = {
    "Management",   "Glidex",      "MirrorLockLogging", "Replica",        "ReplicaTransfer",
    "Provisioning", "StoragePool", "StorageWitness",    "BackupTransfer", "TimeSync",
    "FabricTcp",    "FabricRdma",  "DpuTransport",
};
constexpr KelmNicTagType kUnknownTag = 14;
constexpr unsigned kMaximumInterfaces = 256;

std::vector<std::unique_ptr<KelmNic>> MakeNics(std::vector<KelmNicRecord> records) {
    std::vector<std::unique_ptr<KelmNic>> nics;
    nics.reserve(records.size());
    for (KelmNicRecord& record : records) {
        nics.push_back(std::make_unique<KelmNicImpl>(std::move(record)));
    }
    return nics;
}

std::optional<bool> SystemOf(PortsetGetType type) {
    return type == HostCtl::Network::PortsetGetSystem;
}

// The first name kelmN that no interface has.
std::string FreeName(const std::vector<KelmNicRecord>& nics) {
    std::set<std::string> taken;
    for (const KelmNicRecord& nic : nics) {
        taken.insert(nic.name);
    }
    for (unsigned number = 0; number < kMaximumInterfaces; ++number) {
        std::string name = "kelm" + std::to_string(number);
        if (!taken.contains(name)) {
            return name;
        }
    }
    throw HostCtlException("The host has no free Kelm interface name");
}

// The first address of the host's own Kelm interface range that no interface has.
std::string FreeMac(const std::vector<KelmNicRecord>& nics) {
    std::set<std::string> taken;
    for (const KelmNicRecord& nic : nics) {
        taken.insert(nic.mac);
    }
    for (std::uint32_t number = 0; number <= 0xffff; ++number) {
        std::string mac = HostSim::LocalMac(HostSim::MacKind::KelmInterface, number);
        if (!taken.contains(mac)) {
            return mac;
        }
    }
    throw HostCtlException("The host has no free MAC address for a Kelm interface");
}

void RequireNetstack(HostSim::Database& database, const std::string& key) {
    if (!HostSim::Ip::LoadNetstack(database, key)) {
        throw HostCtlException("There is no netstack instance named " + key);
    }
}

// Fills the connection fields of a new interface on a port group.
void AttachToPortGroup(HostSim::Database& database, const std::string& portGroup,
                       const std::vector<KelmNicRecord>& nics, KelmNicRecord& record) {
    auto group = HostSim::Vswitch::LoadPortGroup(database, portGroup);
    if (!group) {
        throw HostCtlException("There is no port group named " + portGroup);
    }
    for (const KelmNicRecord& nic : nics) {
        if (nic.connectionType == ConnectionPoint::kPortGroup && nic.portGroup == portGroup) {
            throw HostCtlException("Port group " + portGroup + " has the Kelm interface " +
                                   nic.name + " already");
        }
    }
    record.connectionType = ConnectionPoint::kPortGroup;
    record.portset = group->switchName;
    record.portGroup = portGroup;
}

// Fills the connection fields of a new interface on a DVPort that nothing uses.
void AttachToDVPort(HostSim::Database& database, const HostCtl::Network::DVPortParam& param,
                    KelmNicRecord& record) {
    auto dvs = HostSim::Dvs::LoadSwitchById(database, param.dvsId);
    if (!dvs) {
        throw HostCtlException("There is no distributed switch with id " + param.dvsId);
    }
    const auto port =
        std::find_if(dvs->dvports.begin(), dvs->dvports.end(),
                     [&param](const DVPortRecord& held) { return held.id == param.dvPortId; });
    if (port == dvs->dvports.end()) {
        throw HostCtlException("There is no DVPort " + param.dvPortId + " on " + dvs->name);
    }
    if (port->inUse) {
        throw HostCtlException(
            "DVPort " + param.dvPortId + " of " + dvs->name + " is in use by " +
            (port->clients.empty() ? std::string("another port") : port->clients.front()));
    }
    record.connectionType = ConnectionPoint::kDVPort;
    record.portset = dvs->name;
    record.dvsId = param.dvsId;
    record.dvPort = param.dvPortId;
    record.connectionId = param.connectionId;
}

void Attach(HostSim::Database& database, const ConnectionPoint& point,
            const std::vector<KelmNicRecord>& nics, KelmNicRecord& record) {
    switch (point.GetType()) {
        case ConnectionPoint::kPortGroup:
            AttachToPortGroup(database, point.GetPortGroupName(), nics, record);
            return;
        case ConnectionPoint::kDVPort:
            AttachToDVPort(database, point.GetDVPortParam(), record);
            return;
        default:
            throw HostCtlException(
                "A Kelm interface can only be attached to a port group or a DVPort");
    }
}

bool IsAt(const KelmNicRecord& nic, const ConnectionPoint& point) {
    const int type = point.GetType();
    if (type != nic.connectionType) {
        return false;
    }
    if (type == ConnectionPoint::kPortGroup) {
        return nic.portGroup == point.GetPortGroupName();
    }
    if (type == ConnectionPoint::kDVPort) {
        const HostCtl::Network::DVPortParam param = point.GetDVPortParam();
        return nic.dvsId == param.dvsId && nic.dvPort == param.dvPortId;
    }
    return false;
}

std::string Describe(const ConnectionPoint& point) {
    if (point.GetType() == ConnectionPoint::kDVPort) {
        const HostCtl::Network::DVPortParam param = point.GetDVPortParam();
        return "DVPort " + param.dvPortId + " of the distributed switch with id " + param.dvsId;
    }
    return "port group " + point.GetPortGroupName();
}

// The live host's interfaces: the links of the netstacks' namespaces. Linux has no system
// interfaces apart from the ordinary ones.
HostSim::Live::Host* LiveHostFor(PortsetGetType type) {
    auto* live = HostSim::LiveHost();
    if (live != nullptr && type == HostCtl::Network::PortsetGetSystem) {
        throw HostCtlException(HostSim::Live::kNotAvailable);
    }
    return live;
}

// The netstacks whose namespaces are there, the default one first.
std::vector<std::string> LiveNetstacks(HostSim::Live::Host& live) {
    std::vector<std::string> keys;
    for (const NetstackRecord& record : live.Netstacks().LoadAll()) {
        if (record.up) {
            keys.push_back(record.key);
        }
    }
    return keys;
}

bool IsLiveNetstack(HostSim::Live::Host& live, const std::string& key) {
    const auto record = live.Netstacks().Load(key);
    return record && record->up;
}

}  // namespace

KelmNicTagType KelmNicTagNameToId(const std::string& name) {
    for (std::size_t i = 0; i < std::size(kTagNames); ++i) {
        if (name == kTagNames[i]) {
            return static_cast<KelmNicTagType>(i + 1);
        }
    }
    return kUnknownTag;
}

const char* KelmNicTagIdToName(KelmNicTagType tag) {
    if (tag < 1 || tag > static_cast<KelmNicTagType>(std::size(kTagNames))) {
        return "";
    }
    return kTagNames[tag - 1];
}

// Opens the host's store, so that a host that can't be reached fails here.
KelmNicInfoImpl::KelmNicInfoImpl() {
    PassOperation("KelmNicInfoImpl::KelmNicInfoImpl");
    if (HostSim::LiveHost() == nullptr) {
        Store();
    }
}

KelmNicInfoImpl::~KelmNicInfoImpl() = default;

std::vector<std::unique_ptr<KelmNic>> KelmNicInfoImpl::GetKelmNics(PortsetGetType type) {
    PassOperation("KelmNicInfo::GetKelmNics");
    if (auto* live = LiveHostFor(type)) {
        std::vector<std::unique_ptr<KelmNic>> nics;
        for (const std::string& key : LiveNetstacks(*live)) {
            for (auto& nic : LiveKelmNics(live->Interfaces().LoadAll(key), key)) {
                nics.push_back(std::move(nic));
            }
        }
        return nics;
    }
    return MakeNics(HostSim::Ip::LoadKelmNics(Store(), {.system = SystemOf(type)}));
}

std::vector<std::unique_ptr<KelmNic>> KelmNicInfoImpl::GetKelmNicsByInstanceKey(
    const std::string& key, PortsetGetType type) {
    PassOperation("KelmNicInfoImpl::GetKelmNicsByInstanceKey", key);
    if (auto* live = LiveHostFor(type)) {
        if (!IsLiveNetstack(*live, key)) {
            return {};
        }
        return LiveKelmNics(live->Interfaces().LoadAll(key), key);
    }
    return MakeNics(
        HostSim::Ip::LoadKelmNics(Store(), {.system = SystemOf(type), .netstack = key}));
}

std::unique_ptr<KelmNic> KelmNicInfoImpl::GetKelmNicByInterface(const std::string& name, bool,
                                                                PortsetGetType type) {
    PassOperation("KelmNicInfoImpl::GetKelmNicByInterface", name);
    // Each namespace has names of its own: the default netstack's come first.
    if (auto* live = LiveHostFor(type)) {
        for (const std::string& key : LiveNetstacks(*live)) {
            if (auto record = live->Interfaces().Load(key, name)) {
                return std::make_unique<LiveKelmNic>(std::move(*record),
                                                     std::make_shared<LiveIpSettings>(key));
            }
        }
        return nullptr;
    }
    auto records = HostSim::Ip::LoadKelmNics(Store(), {.system = SystemOf(type), .name = name});
    if (records.empty()) {
        return nullptr;
    }
    return std::make_unique<KelmNicImpl>(std::move(records.front()));
}

std::vector<std::unique_ptr<KelmNic>> KelmNicInfoImpl::GetKelmNicsByTag(KelmNicTagType tag) {
    PassOperation("KelmNicInfoImpl::GetKelmNicsByTag", KelmNicTagIdToName(tag));
    if (HostSim::LiveHost() != nullptr) {
        throw HostCtlException(HostSim::Live::kNotAvailable);
    }
    auto records = HostSim::Ip::LoadKelmNics(Store(), {});
    std::erase_if(records, [tag](const KelmNicRecord& record) {
        return std::find(record.tags.begin(), record.tags.end(), tag) == record.tags.end();
    });
    return MakeNics(std::move(records));
}

void KelmNicInfoImpl::GetKelmNicNamesByInstanceKey(std::vector<std::string>& names,
                                                   const std::string& key, PortsetGetType type) {
    PassOperation("KelmNicInfoImpl::GetKelmNicNamesByInstanceKey", key);
    if (auto* live = LiveHostFor(type)) {
        if (IsLiveNetstack(*live, key)) {
            for (const HostSim::Live::InterfaceRecord& record : live->Interfaces().LoadAll(key)) {
                names.push_back(record.name);
            }
        }
        return;
    }
    for (const KelmNicRecord& record :
         HostSim::Ip::LoadKelmNics(Store(), {.system = SystemOf(type), .netstack = key})) {
        names.push_back(record.name);
    }
}

std::unique_ptr<KelmNic> KelmNicInfoImpl::AddKelmNic(
    const ConnectionPoint& connectionPoint, const std::string& netstackKey,
    const HostCtl::Network::IpConfig& ipConfig, const HostCtl::Network::MacAddress& mac,
    unsigned flags, unsigned mtu, unsigned numRxQueue, const std::string& name, bool system) {
    PassOperation("KelmNicInfoImpl::AddKelmNic", name);
    // A link on Linux is made as what it is (a veth, a VLAN, a bridge), not on a port group.
    if (HostSim::LiveHost() != nullptr) {
        throw HostCtlException(HostSim::Live::kNotAvailable);
    }
    if (flags != 0 || system) {
        throw HostCtlException("System Kelm interfaces are made by the host only");
    }
    if (mtu != 0) {
        HostSim::Ip::CheckMtu(static_cast<long>(mtu));
    }
    if (numRxQueue > HostSim::Ip::kMaximumRxQueues) {
        throw HostCtlException("RX queue count " + std::to_string(numRxQueue) +
                               " is out of range (1-" +
                               std::to_string(HostSim::Ip::kMaximumRxQueues) + ")");
    }
    if (!name.empty()) {
        HostSim::CheckObjectName(name, "Kelm interface");
    }
    HostSim::Ip::CheckIpConfig(ipConfig, name);

    HostSim::Database& database = Store();
    HostSim::WriteTransaction transaction(database);
    RequireNetstack(database, netstackKey);
    const auto nics = HostSim::Ip::LoadKelmNics(database, {});
    KelmNicRecord record;
    Attach(database, connectionPoint, nics, record);
    record.name = name.empty() ? FreeName(nics) : name;
    record.netstack = netstackKey;
    const std::string macText = mac.GetStringAddress();
    if (mac == HostCtl::Network::MacAddress()) {
        record.mac = FreeMac(nics);
    } else if ((mac.GetBytes()[0] & 1) != 0) {
        throw HostCtlException("MAC address " + macText + " is not a unicast address");
    } else {
        record.mac = macText;
    }
    std::uint32_t portId = 0;
    for (const KelmNicRecord& nic : nics) {
        if (nic.name == record.name) {
            throw HostCtlException("Kelm interface " + record.name + " already exists");
        }
        if (nic.mac == record.mac) {
            throw HostCtlException("MAC address " + record.mac + " is in use by " + nic.name);
        }
        portId = std::max(portId, nic.portId);
    }
    record.portId = std::max(portId, 33554431u) + 1;
    record.mtu = mtu != 0 ? mtu : HostSim::Ip::kDefaultMtu;
    record.rxQueues = numRxQueue != 0 ? numRxQueue : 1;
    record.configuredIpConfig = HostSim::Ip::IpConfigToJson(ipConfig).dump();
    record.ipConfig =
        HostSim::Ip::IpConfigToJson(HostSim::Ip::InForce(ipConfig, record.portId)).dump();
    HostSim::Ip::InsertKelmNic(database, record);
    if (record.connectionType == ConnectionPoint::kPortGroup) {
        HostSim::Ip::AddPortGroupUser(database, record.portGroup, record.name);
    } else {
        HostSim::Ip::AddDVPortClient(database, record.dvsId, record.dvPort, record.name);
    }
    transaction.Commit();
    return std::make_unique<KelmNicImpl>(std::move(record));
}

void KelmNicInfoImpl::RemoveKelmNic(const ConnectionPoint& connectionPoint,
                                    const std::string& netstackKey) {
    PassOperation("KelmNicInfoImpl::RemoveKelmNic", netstackKey);
    if (HostSim::LiveHost() != nullptr) {
        throw HostCtlException(HostSim::Live::kNotAvailable);
    }
    HostSim::Database& database = Store();
    HostSim::WriteTransaction transaction(database);
    for (const KelmNicRecord& nic : HostSim::Ip::LoadKelmNics(database, {.system = false})) {
        if (nic.netstack == netstackKey && IsAt(nic, connectionPoint)) {
            HostSim::Ip::RemoveKelmNicRow(database, nic);
            transaction.Commit();
            return;
        }
    }
    throw HostCtlException("There is no Kelm interface of netstack " + netstackKey + " on " +
                           Describe(connectionPoint));
}

}  // namespace KelmCtl::Network
