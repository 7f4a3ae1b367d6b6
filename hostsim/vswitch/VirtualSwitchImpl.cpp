// Host operations of standard switches: the switch itself, the collection of switches, and the
// look-ups by name. On the live host the standard switches are the bridges of the namespace.
#include "hostsim/vswitch/VirtualSwitchImpl.h"

#include "hostctl/HostCtlException.h"
#include "hostctl/NetworkInfo.h"
#include "hostsim/core/HostChoice.h"
#include "hostsim/core/Operation.h"
#include "hostsim/core/Store.h"
#include "hostsim/dvs/DvsStore.h"
#include "hostsim/nic/NicStore.h"
#include "hostsim/vswitch/BridgeImpl.h"
#include "hostsim/vswitch/VswitchRules.h"
#include "kelmctl/PortGroupImpl.h"
#include "kelmctl/PortsetImpl.h"
#include "kelmctl/VirtualSwitchInfoImpl.h"

namespace HostSim::Vswitch {

using HostCtl::Lib::HostCtlException;
using HostCtl::Network::NicTeamingPolicy;
using HostCtl::Network::PortGroup;
using HostCtl::Network::PortSecurityPolicy;
using HostCtl::Network::ShapingPolicy;
using KelmCtl::Network::PortGroupImpl;
using KelmCtl::Network::PortGroupRecord;

namespace {

// Writes one policy column of a switch in a transaction of its own.
void WritePolicy(const std::string& switchName, const char* sql, const std::string& json) {
    Database& database = Store();
    WriteTransaction transaction(database);
    RequireSwitch(database, switchName);
    database.Query(sql).Bind(1, json).Bind(2, switchName).Run();
    transaction.Commit();
}

void WriteSetting(const std::string& switchName, const char* sql, std::int64_t value) {
    Database& database = Store();
    WriteTransaction transaction(database);
    RequireSwitch(database, switchName);
    database.Query(sql).Bind(1, value).Bind(2, switchName).Run();
    transaction.Commit();
}

std::string NoSuchPortGroupOn(const std::string& name, const std::string& switchName) {
    return "There is no port group named " + name + " on " + switchName;
}

}  // namespace

std::string VirtualSwitchImpl::GetName() const {
    PassOperation("Portset::GetName", record_.name);
    return record_.name;
}

std::string VirtualSwitchImpl::GetClass() const {
    PassOperation("Portset::GetClass", record_.name);
    return record_.className;
}

std::uint32_t VirtualSwitchImpl::GetNumPorts() const {
    PassOperation("Portset::GetNumPorts", record_.name);
    return record_.ports;
}

// Each uplink and each client of a port group holds a port.
std::uint32_t VirtualSwitchImpl::GetNumUsedPorts() const {
    PassOperation("Portset::GetNumUsedPorts", record_.name);
    return static_cast<std::uint32_t>(record_.uplinks.size()) + PortGroups().activeClients;
}

std::uint32_t VirtualSwitchImpl::GetNumConfiguredPorts() const {
    PassOperation("Portset::GetNumConfiguredPorts", record_.name);
    return record_.ports;
}

std::vector<std::string> VirtualSwitchImpl::GetUplinks(bool activeOnly) const {
    PassOperation("Portset::GetUplinks", record_.name);
    if (!activeOnly) {
        return record_.uplinks;
    }
    const NicTeamingPolicy teaming = record_.Effective().teaming;
    const auto activeCount =
        std::min<std::size_t>(static_cast<std::size_t>(std::max(teaming.maxActiveUplinks, 0)),
                              teaming.uplinkOrder.size());
    return {teaming.uplinkOrder.begin(),
            teaming.uplinkOrder.begin() + static_cast<long>(activeCount)};
}

std::uint32_t VirtualSwitchImpl::GetMTU() const {
    PassOperation("VirtualSwitch::GetMTU", record_.name);
    return record_.mtu;
}

void VirtualSwitchImpl::SetMTU(int mtu) {
    PassOperation("VirtualSwitch::SetMTU", record_.name);
    CheckMtu(mtu);
    WriteSetting(record_.name, "UPDATE vswitch SET mtu = ?1 WHERE name = ?2", mtu);
    record_.mtu = static_cast<std::uint32_t>(mtu);
}

int VirtualSwitchImpl::GetCdpStatus() const {
    PassOperation("VirtualSwitch::GetCdpStatus", record_.name);
    return record_.cdpStatus;
}

void VirtualSwitchImpl::SetCdpStatus(int status) {
    PassOperation("VirtualSwitch::SetCdpStatus", record_.name);
    CheckCdpStatus(status);
    WriteSetting(record_.name, "UPDATE vswitch SET cdp_status = ?1 WHERE name = ?2", status);
    record_.cdpStatus = status;
}

bool VirtualSwitchImpl::GetBeaconEnabled() const {
    PassOperation("VirtualSwitch::GetBeaconEnabled", record_.name);
    return record_.beaconEnabled;
}

std::uint32_t VirtualSwitchImpl::GetBeaconInterval() const {
    PassOperation("VirtualSwitch::GetBeaconInterval", record_.name);
    return record_.beaconInterval;
}

std::uint32_t VirtualSwitchImpl::GetBeaconThreshold() const {
    PassOperation("VirtualSwitch::GetBeaconThreshold", record_.name);
    return record_.beaconThreshold;
}

std::vector<std::string> VirtualSwitchImpl::GetBeaconRequiredBy() const {
    PassOperation("VirtualSwitch::GetBeaconRequiredBy", record_.name);
    return PortGroups().beaconRequiredBy;
}

PortGroupSummary VirtualSwitchImpl::PortGroups() const {
    return record_.portGroups ? *record_.portGroups : SummarizePortGroups(Store(), record_);
}

std::vector<std::unique_ptr<PortGroup>> VirtualSwitchImpl::GetPortGroups() const {
    PassOperation("VirtualSwitch::GetPortGroups", record_.name);
    std::vector<std::unique_ptr<PortGroup>> portGroups;
    for (PortGroupRecord& record : ListPortGroupsOf(Store(), record_.name)) {
        portGroups.push_back(
            std::make_unique<PortGroupImpl>(std::make_unique<PortGroupRecord>(std::move(record))));
    }
    return portGroups;
}

std::unique_ptr<PortGroup> VirtualSwitchImpl::AddPortGroup(const std::string& name) {
    PassOperation("VirtualSwitch::AddPortGroup", record_.name);
    CheckPortGroupName(name);
    Database& database = Store();
    WriteTransaction transaction(database);
    RequireSwitch(database, record_.name);
    if (auto existing = LoadPortGroup(database, name)) {
        throw HostCtlException("Port group " + name + " already exists on " + existing->switchName);
    }
    PortGroupRecord record;
    record.name = name;
    record.switchName = record_.name;
    InsertPortGroup(database, record);
    auto added = LoadPortGroup(database, name);
    transaction.Commit();
    return std::make_unique<PortGroupImpl>(std::make_unique<PortGroupRecord>(std::move(*added)));
}

void VirtualSwitchImpl::RemovePortGroup(const std::string& name) {
    PassOperation("VirtualSwitch::RemovePortGroup", record_.name);
    Database& database = Store();
    WriteTransaction transaction(database);
    auto portGroup = LoadPortGroup(database, name);
    if (!portGroup || portGroup->switchName != record_.name) {
        throw HostCtlException(NoSuchPortGroupOn(name, record_.name));
    }
    if (!portGroup->users.empty()) {
        throw HostCtlException("Port group " + name + " is in use by " + portGroup->users.front());
    }
    database.Query("DELETE FROM vswitch_portgroup WHERE name = ?1").Bind(1, name).Run();
    transaction.Commit();
}

void VirtualSwitchImpl::AddUplink(const std::string& nicName, bool) {
    PassOperation("VirtualSwitch::AddUplink", record_.name);
    Database& database = Store();
    WriteTransaction transaction(database);
    RequireSwitch(database, record_.name);
    if (!Nic::Load(database, nicName)) {
        throw HostCtlException("There is no NIC named " + nicName + " on this host");
    }
    auto owner = database.Query("SELECT vswitch FROM vswitch_uplink WHERE nic = ?1");
    owner.Bind(1, nicName);
    if (owner.Step()) {
        throw HostCtlException("NIC " + nicName + " is already an uplink of " + owner.Text(0));
    }
    if (auto distributed = Dvs::SwitchOfUplink(database, nicName)) {
        throw HostCtlException("NIC " + nicName + " is already an uplink of " + *distributed);
    }
    InsertUplink(database, record_.name, nicName);
    transaction.Commit();
    record_.uplinks.push_back(nicName);
}

// The NIC also leaves the uplink order of the switch's teaming and of its port groups'.
void VirtualSwitchImpl::RemoveUplink(const std::string& nicName, bool) {
    PassOperation("VirtualSwitch::RemoveUplink", record_.name);
    Database& database = Store();
    WriteTransaction transaction(database);
    auto current = LoadSwitch(database, record_.name, std::nullopt);
    if (!current) {
        throw HostCtlException("There is no virtual switch named " + record_.name);
    }
    if (std::find(current->uplinks.begin(), current->uplinks.end(), nicName) ==
        current->uplinks.end()) {
        throw HostCtlException("NIC " + nicName + " is not an uplink of " + record_.name);
    }
    database.Query("DELETE FROM vswitch_uplink WHERE nic = ?1").Bind(1, nicName).Run();
    if (DropUplink(current->own.teaming, nicName)) {
        database.Query("UPDATE vswitch SET teaming = ?1 WHERE name = ?2")
            .Bind(1, TeamingToJson(current->own.teaming).dump())
            .Bind(2, record_.name)
            .Run();
    }
    for (PortGroupRecord& portGroup : LoadPortGroupsOf(database, record_.name)) {
        if (DropUplink(portGroup.own.teaming, nicName)) {
            database.Query("UPDATE vswitch_portgroup SET teaming = ?1 WHERE name = ?2")
                .Bind(1, TeamingToJson(portGroup.own.teaming).dump())
                .Bind(2, portGroup.name)
                .Run();
        }
    }
    transaction.Commit();
    std::erase(record_.uplinks, nicName);
    DropUplink(record_.own.teaming, nicName);
}

PortSecurityPolicy VirtualSwitchImpl::GetEffectiveSecurityPolicy() const {
    PassOperation("VirtualSwitch::GetEffectiveSecurityPolicy", record_.name);
    return record_.Effective().security;
}

PortSecurityPolicy VirtualSwitchImpl::GetSecurityPolicy() const {
    PassOperation("VirtualSwitch::GetSecurityPolicy", record_.name);
    return record_.own.security;
}

void VirtualSwitchImpl::SetSecurityPolicy(const PortSecurityPolicy& policy) {
    PassOperation("VirtualSwitch::SetSecurityPolicy", record_.name);
    WritePolicy(record_.name, "UPDATE vswitch SET security = ?1 WHERE name = ?2",
                SecurityToJson(policy).dump());
    record_.own.security = policy;
}

ShapingPolicy VirtualSwitchImpl::GetEffectiveShapingPolicy() const {
    PassOperation("VirtualSwitch::GetEffectiveShapingPolicy", record_.name);
    return record_.Effective().shaping;
}

ShapingPolicy VirtualSwitchImpl::GetShapingPolicy() const {
    PassOperation("VirtualSwitch::GetShapingPolicy", record_.name);
    return record_.own.shaping;
}

void VirtualSwitchImpl::SetShapingPolicy(const ShapingPolicy& policy) {
    PassOperation("VirtualSwitch::SetShapingPolicy", record_.name);
    WritePolicy(record_.name, "UPDATE vswitch SET shaping = ?1 WHERE name = ?2",
                ShapingToJson(policy).dump());
    record_.own.shaping = policy;
}

NicTeamingPolicy VirtualSwitchImpl::GetEffectiveTeamingPolicy() const {
    PassOperation("VirtualSwitch::GetEffectiveTeamingPolicy", record_.name);
    return record_.Effective().teaming;
}

NicTeamingPolicy VirtualSwitchImpl::GetTeamingPolicy() const {
    PassOperation("VirtualSwitch::GetTeamingPolicy", record_.name);
    return record_.own.teaming;
}

void VirtualSwitchImpl::SetTeamingPolicy(const NicTeamingPolicy& policy) {
    PassOperation("VirtualSwitch::SetTeamingPolicy", record_.name);
    Database& database = Store();
    WriteTransaction transaction(database);
    RequireSwitch(database, record_.name);
    CheckTeaming(policy, LoadUplinks(database, record_.name), record_.name);
    database.Query("UPDATE vswitch SET teaming = ?1 WHERE name = ?2")
        .Bind(1, TeamingToJson(policy).dump())
        .Bind(2, record_.name)
        .Run();
    transaction.Commit();
    record_.own.teaming = policy;
}

}  // namespace HostSim::Vswitch

namespace HostSim::Vswitch {
namespace {

// The live host's bridges, when the process acts on it; Linux has no system switches.
Live::BridgeDriver* LiveBridges(HostCtl::Network::PortsetGetType type) {
    auto* live = LiveHost();
    if (live != nullptr && type != HostCtl::Network::PortsetGetNormal) {
        throw HostCtl::Lib::HostCtlException(Live::kNotAvailable);
    }
    return live != nullptr ? &live->Bridges() : nullptr;
}

std::unique_ptr<HostCtl::Network::VirtualSwitch> LiveSwitch(Live::BridgeDriver& bridges,
                                                            const std::string& name) {
    auto record = bridges.Load(name);
    return record ? std::make_unique<BridgeImpl>(std::move(*record)) : nullptr;
}

}  // namespace
}  // namespace HostSim::Vswitch

namespace KelmCtl::Network {

using HostSim::PassOperation;
using HostSim::Store;
using HostSim::Vswitch::BridgeImpl;
using HostSim::Vswitch::LiveBridges;
using HostSim::Vswitch::VirtualSwitchImpl;

bool PortsetImpl::IsValidVirtualSwitch(const std::string& name) {
    PassOperation("PortsetImpl::IsValidVirtualSwitch", name);
    if (auto* bridges = LiveBridges(HostCtl::Network::PortsetGetNormal)) {
        return bridges->Load(name).has_value();
    }
    return HostSim::Vswitch::SwitchExists(Store(), name);
}

std::unique_ptr<HostCtl::Network::VirtualSwitch> VirtualSwitchInfoImpl::AddVirtualSwitchWithPolicy(
    const HostCtl::Network::NicTeamingPolicy& teaming,
    const HostCtl::Network::PortSecurityPolicy& security,
    const HostCtl::Network::ShapingPolicy& shaping, const HostCtl::Network::NicCapabilities&,
    const std::string& name, unsigned ports) {
    PassOperation("VirtualSwitchInfoImpl::AddVirtualSwitchWithPolicy", name);
    // A bridge has its ports whatever is asked, and no policies: the defaults asked for are
    // what it does.
    if (auto* bridges = LiveBridges(HostCtl::Network::PortsetGetNormal)) {
        if (ports > BridgeImpl::kBridgePorts) {
            throw HostCtl::Lib::HostCtlException(
                "A bridge has " + std::to_string(BridgeImpl::kBridgePorts) +
                " ports; virtual switch " + name + " can't have " + std::to_string(ports));
        }
        bridges->Add(name);
        return HostSim::Vswitch::LiveSwitch(*bridges, name);
    }
    HostSim::Vswitch::CheckSwitchName(name);
    HostSim::Vswitch::CheckPorts(ports);
    HostSim::Vswitch::CheckTeaming(teaming, {}, name);
    HostSim::Database& database = Store();
    HostSim::WriteTransaction transaction(database);
    if (HostSim::Vswitch::SwitchExists(database, name)) {
        throw HostCtl::Lib::HostCtlException("Virtual switch " + name + " already exists");
    }
    auto allocated = database.Query("SELECT coalesce(sum(ports), 0) FROM vswitch");
    allocated.Step();
    const std::int64_t inUse = allocated.Int(0);
    if (inUse + ports > HostSim::Vswitch::kMaximumHostPorts) {
        throw HostCtl::Lib::HostCtlException(
            "Unable to give virtual switch " + name + " " + std::to_string(ports) +
            " ports: the host has " + std::to_string(inUse) + " of " +
            std::to_string(HostSim::Vswitch::kMaximumHostPorts) + " ports allocated");
    }
    HostSim::Vswitch::SwitchRecord record;
    record.name = name;
    record.className = "etherswitch";
    record.ports = ports;
    record.mtu = 1500;
    record.cdpStatus = 1;
    record.beaconInterval = 1;
    record.beaconThreshold = 3;
    record.own = {teaming, security, shaping};
    HostSim::Vswitch::InsertSwitch(database, record);
    transaction.Commit();
    return std::make_unique<VirtualSwitchImpl>(std::move(record));
}

std::unique_ptr<HostCtl::Network::VirtualSwitch> VirtualSwitchInfoImpl::GetVirtualSwitchByName(
    const std::string& name, HostCtl::Network::PortsetGetType type) {
    PassOperation("VirtualSwitchInfoImpl::GetVirtualSwitchByName", name);
    if (auto* bridges = LiveBridges(type)) {
        return HostSim::Vswitch::LiveSwitch(*bridges, name);
    }
    auto record = HostSim::Vswitch::LoadSwitch(Store(), name, type);
    if (!record) {
        return nullptr;
    }
    return std::make_unique<VirtualSwitchImpl>(std::move(*record));
}

std::vector<std::unique_ptr<HostCtl::Network::VirtualSwitch>>
VirtualSwitchInfoImpl::GetVirtualSwitches(HostCtl::Network::PortsetGetType type) {
    PassOperation("VirtualSwitchInfoImpl::GetVirtualSwitches");
    std::vector<std::unique_ptr<HostCtl::Network::VirtualSwitch>> switches;
    if (auto* bridges = LiveBridges(type)) {
        for (auto& record : bridges->LoadAll()) {
            switches.push_back(std::make_unique<BridgeImpl>(std::move(record)));
        }
        return switches;
    }
    for (auto& record : HostSim::Vswitch::LoadSwitches(Store(), type)) {
        switches.push_back(std::make_unique<VirtualSwitchImpl>(std::move(record)));
    }
    return switches;
}

// A switch goes with its uplinks and port groups, unless one of those is in use. A bridge lets
// its ports go as it goes.
void VirtualSwitchInfoImpl::RemoveVirtualSwitch(const std::string& name) {
    PassOperation("VirtualSwitchInfoImpl::RemoveVirtualSwitch", name);
    if (auto* bridges = LiveBridges(HostCtl::Network::PortsetGetNormal)) {
        bridges->Remove(name);
        return;
    }
    HostSim::Database& database = Store();
    HostSim::WriteTransaction transaction(database);
    HostSim::Vswitch::RequireSwitch(database, name);
    for (const PortGroupRecord& portGroup : HostSim::Vswitch::LoadPortGroupsOf(database, name)) {
        if (!portGroup.users.empty()) {
            throw HostCtl::Lib::HostCtlException(
                "Virtual switch " + name + " can't be removed: its port group " + portGroup.name +
                " is in use by " + portGroup.users.front());
        }
    }
    database.Query("DELETE FROM vswitch_portgroup WHERE vswitch = ?1").Bind(1, name).Run();
    database.Query("DELETE FROM vswitch_uplink WHERE vswitch = ?1").Bind(1, name).Run();
    database.Query("DELETE FROM vswitch WHERE name = ?1").Bind(1, name).Run();
    transaction.Commit();
}

}  // namespace KelmCtl::Network

namespace HostCtl::Network {

std::unique_ptr<VirtualSwitch> NetworkFactory::GetVirtualSwitchById(const std::string& name,
                                                                    PortsetGetType type) {
    HostSim::PassOperation("NetworkFactory::GetVirtualSwitchById", name);
    if (auto* bridges = HostSim::Vswitch::LiveBridges(type)) {
        return HostSim::Vswitch::LiveSwitch(*bridges, name);
    }
    auto record = HostSim::Vswitch::LoadSwitch(HostSim::Store(), name, type);
    if (!record) {
        return nullptr;
    }
    return std::make_unique<HostSim::Vswitch::VirtualSwitchImpl>(std::move(*record));
}

}  // namespace HostCtl::Network
