// Host operations of a live host's standard switch, each passing the same choke point as the
// simulated host's.
#include "hostsim/vswitch/BridgeImpl.h"

#include <algorithm>

#include "hostctl/HostCtlException.h"
#include "hostctl/PortGroup.h"
#include "hostsim/core/HostChoice.h"
#include "hostsim/core/Operation.h"

namespace HostSim::Vswitch {

using HostCtl::Network::NicTeamingPolicy;
using HostCtl::Network::PortGroup;
using HostCtl::Network::PortSecurityPolicy;
using HostCtl::Network::ShapingPolicy;

namespace {

constexpr char kBridgeClass[] = "bridge";

Live::Host& TheLiveHost() {
    return *LiveHost();
}

[[noreturn]] void NotAvailable(const char* operation, const std::string& name) {
    PassOperation(operation, name);
    throw HostCtl::Lib::HostCtlException(Live::kNotAvailable);
}

}  // namespace

std::string BridgeImpl::GetName() const {
    PassOperation("Portset::GetName", record_.name);
    return record_.name;
}

std::string BridgeImpl::GetClass() const {
    PassOperation("Portset::GetClass", record_.name);
    return kBridgeClass;
}

std::uint32_t BridgeImpl::GetNumPorts() const {
    PassOperation("Portset::GetNumPorts", record_.name);
    return kBridgePorts;
}

// Every link enslaved to the bridge holds one of its ports.
std::uint32_t BridgeImpl::GetNumUsedPorts() const {
    PassOperation("Portset::GetNumUsedPorts", record_.name);
    return static_cast<std::uint32_t>(record_.ports.size());
}

std::uint32_t BridgeImpl::GetNumConfiguredPorts() const {
    PassOperation("Portset::GetNumConfiguredPorts", record_.name);
    return kBridgePorts;
}

// A bridge forwards over all its ports: no teaming policy picks the active ones.
std::vector<std::string> BridgeImpl::GetUplinks(bool activeOnly) const {
    if (activeOnly) {
        NotAvailable("Portset::GetUplinks", record_.name);
    }
    PassOperation("Portset::GetUplinks", record_.name);
    return record_.ports;
}

std::uint32_t BridgeImpl::GetMTU() const {
    PassOperation("VirtualSwitch::GetMTU", record_.name);
    return record_.mtu;
}

// The kernel judges the MTU.
void BridgeImpl::SetMTU(int mtu) {
    PassOperation("VirtualSwitch::SetMTU", record_.name);
    TheLiveHost().Bridges().SetMtu(record_.name, static_cast<std::uint32_t>(mtu));
    record_.mtu = static_cast<std::uint32_t>(mtu);
}

// A bridge neither listens for nor advertises discovery frames: its CDP status is "down".
int BridgeImpl::GetCdpStatus() const {
    PassOperation("VirtualSwitch::GetCdpStatus", record_.name);
    return 0;
}

void BridgeImpl::SetCdpStatus(int) {
    NotAvailable("VirtualSwitch::SetCdpStatus", record_.name);
}

// Nor does it probe its uplinks with beacons.
bool BridgeImpl::GetBeaconEnabled() const {
    PassOperation("VirtualSwitch::GetBeaconEnabled", record_.name);
    return false;
}

std::uint32_t BridgeImpl::GetBeaconInterval() const {
    PassOperation("VirtualSwitch::GetBeaconInterval", record_.name);
    return 0;
}

std::uint32_t BridgeImpl::GetBeaconThreshold() const {
    PassOperation("VirtualSwitch::GetBeaconThreshold", record_.name);
    return 0;
}

std::vector<std::string> BridgeImpl::GetBeaconRequiredBy() const {
    PassOperation("VirtualSwitch::GetBeaconRequiredBy", record_.name);
    return {};
}

// A bridge has no port groups.
std::vector<std::unique_ptr<PortGroup>> BridgeImpl::GetPortGroups() const {
    PassOperation("VirtualSwitch::GetPortGroups", record_.name);
    return {};
}

std::unique_ptr<PortGroup> BridgeImpl::AddPortGroup(const std::string&) {
    NotAvailable("VirtualSwitch::AddPortGroup", record_.name);
}

void BridgeImpl::RemovePortGroup(const std::string&) {
    NotAvailable("VirtualSwitch::RemovePortGroup", record_.name);
}

void BridgeImpl::AddUplink(const std::string& nicName, bool) {
    PassOperation("VirtualSwitch::AddUplink", record_.name);
    if (!TheLiveHost().Nics().Load(nicName)) {
        throw HostCtl::Lib::HostCtlException("There is no NIC named " + nicName + " on this host");
    }
    TheLiveHost().Bridges().AddPort(record_.name, nicName);
    record_.ports.push_back(nicName);
}

void BridgeImpl::RemoveUplink(const std::string& nicName, bool) {
    PassOperation("VirtualSwitch::RemoveUplink", record_.name);
    TheLiveHost().Bridges().RemovePort(record_.name, nicName);
    std::erase(record_.ports, nicName);
}

PortSecurityPolicy BridgeImpl::GetEffectiveSecurityPolicy() const {
    NotAvailable("VirtualSwitch::GetEffectiveSecurityPolicy", record_.name);
}

PortSecurityPolicy BridgeImpl::GetSecurityPolicy() const {
    NotAvailable("VirtualSwitch::GetSecurityPolicy", record_.name);
}

void BridgeImpl::SetSecurityPolicy(const PortSecurityPolicy&) {
    NotAvailable("VirtualSwitch::SetSecurityPolicy", record_.name);
}

ShapingPolicy BridgeImpl::GetEffectiveShapingPolicy() const {
    NotAvailable("VirtualSwitch::GetEffectiveShapingPolicy", record_.name);
}

ShapingPolicy BridgeImpl::GetShapingPolicy() const {
    NotAvailable("VirtualSwitch::GetShapingPolicy", record_.name);
}

void BridgeImpl::SetShapingPolicy(const ShapingPolicy&) {
    NotAvailable("VirtualSwitch::SetShapingPolicy", record_.name);
}

NicTeamingPolicy BridgeImpl::GetEffectiveTeamingPolicy() const {
    NotAvailable("VirtualSwitch::GetEffectiveTeamingPolicy", record_.name);
}

NicTeamingPolicy BridgeImpl::GetTeamingPolicy() const {
    NotAvailable("VirtualSwitch::GetTeamingPolicy", record_.name);
}

void BridgeImpl::SetTeamingPolicy(const NicTeamingPolicy&) {
    NotAvailable("VirtualSwitch::SetTeamingPolicy", record_.name);
}

}  // namespace HostSim::Vswitch
