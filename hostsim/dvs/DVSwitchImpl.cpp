// Host operations of distributed switches: the switch, its LACP state, the look-ups by name,
// and the collection of every kind of switch.
#include "kelmctl/DVSwitchImpl.h"

#include <algorithm>
#include <cstring>

#include "hostctl/HostCtlException.h"
#include "hostctl/NetworkInfo.h"
#include "hostsim/core/Operation.h"
#include "hostsim/core/Store.h"
#include "hostsim/dvs/DvsStore.h"
#include "hostsim/vswitch/VirtualSwitchImpl.h"
#include "hostsim/vswitch/VswitchStore.h"
#include "kelmctl/DVPortImpl.h"
#include "kelmctl/VirtualSwitchInfoImpl.h"

namespace KelmCtl::Network {

using HostCtl::Lib::HostCtlException;
using HostCtl::Network::DVPort;
using HostCtl::Network::DVPortParam;
using HostCtl::Network::LacpNicStatus;
using HostCtl::Network::LagConfig;
using HostCtl::Network::LagStatus;
using HostSim::PassOperation;
using HostSim::Store;

namespace {

constexpr const char* kCdpStatusWords[] = {"down", "listen", "advertise", "both"};

template <std::size_t N>
void CopyText(char (&field)[N], const std::string& text) {
    const std::size_t length = std::min(text.size(), N - 1);
    std::memcpy(field, text.data(), length);
    field[length] = '\0';
}

std::unique_ptr<LacpNicStatus> PackNic(const HostSim::Dvs::LagNic& nic) {
    auto status = std::make_unique<LacpNicStatus>();
    std::memset(status.get(), 0, sizeof(LacpNicStatus));
    CopyText(status->nicName, nic.nic);
    CopyText(status->state, nic.state);
    status->portNumber = nic.portNumber;
    status->portPriority = nic.portPriority;
    status->adminKey = nic.adminKey;
    status->operKey = nic.operKey;
    status->portState = nic.portState;
    CopyText(status->flags, nic.flags);
    status->partnerAge = nic.partner.age;
    status->partnerPortNumber = nic.partner.portNumber;
    status->partnerPortPriority = nic.partner.portPriority;
    status->partnerOperKey = nic.partner.operKey;
    status->partnerPortState = nic.partner.portState;
    CopyText(status->partnerDeviceId, nic.partner.deviceId);
    CopyText(status->partnerFlags, nic.partner.flags);
    status->rxLacpdus = nic.rxLacpdus;
    status->txLacpdus = nic.txLacpdus;
    status->rxErrors = nic.rxErrors;
    status->txErrors = nic.txErrors;
    return status;
}

// The actor's timeout bit and the rate letter of its flags ("S" slow, "F" fast).
void SetTimeout(HostSim::Dvs::LagNic& nic, bool shortTimeout) {
    if (shortTimeout) {
        nic.portState |= HostSim::Dvs::kTimeoutBit;
    } else {
        nic.portState &= static_cast<std::uint8_t>(~HostSim::Dvs::kTimeoutBit);
    }
    for (char& letter : nic.flags) {
        if (letter == 'S' || letter == 'F') {
            letter = shortTimeout ? 'F' : 'S';
        }
    }
}

// What GetDVSwitchByName gives for a name the host doesn't know: every operation says so.
class UnknownDVSwitch final : public HostCtl::Network::DVSwitch {
public:
    explicit UnknownDVSwitch(std::string name) : name_(std::move(name)) {}

    std::string GetName() const override { Refuse("Portset::GetName"); }
    std::string GetClass() const override { Refuse("Portset::GetClass"); }
    std::uint32_t GetNumPorts() const override { Refuse("Portset::GetNumPorts"); }
    std::uint32_t GetNumUsedPorts() const override { Refuse("Portset::GetNumUsedPorts"); }
    std::uint32_t GetNumConfiguredPorts() const override {
        Refuse("Portset::GetNumConfiguredPorts");
    }
    std::vector<std::string> GetUplinks(bool) const override { Refuse("Portset::GetUplinks"); }
    std::vector<std::unique_ptr<HostCtl::Network::Port>> GetPorts() const override {
        Refuse("Portset::GetPorts");
    }
    std::string GetDvsName() const override { Refuse("DVSwitch::GetDvsName"); }
    std::string GetDvsId() const override { Refuse("DVSwitch::GetDvsId"); }
    std::map<std::string, DVPortParam> GetUplinkPorts() const override {
        Refuse("DVSwitch::GetUplinkPorts");
    }
    void GetDVPortIds(std::vector<std::string>&, std::vector<std::string>&, bool) const override {
        Refuse("DVSwitch::GetDVPortIds");
    }
    std::unique_ptr<DVPort> GetDVPortById(const std::string&) const override {
        Refuse("DVSwitch::GetDVPortById");
    }
    void GetLagConfigs(std::vector<LagConfig>&) const override {
        Refuse("DVSwitch::GetLagConfigs");
    }
    void GetLacpStatus(std::vector<LagStatus>&) const override {
        Refuse("DVSwitch::GetLacpStatus");
    }
    bool IsLacpStateOnDpu() const override { Refuse("DVSwitch::IsLacpStateOnDpu"); }
    void SetLacpTimeout(int, bool, const std::string&) override {
        Refuse("DVSwitch::SetLacpTimeout");
    }

private:
    [[noreturn]] void Refuse(const char* operation) const {
        PassOperation(operation, name_);
        throw HostCtlException(HostSim::Dvs::NoSuchSwitch(name_));
    }

    std::string name_;
};

std::vector<std::unique_ptr<HostCtl::Network::DVSwitch>> MakeSwitches(
    std::vector<DVSwitchRecord> records) {
    std::vector<std::unique_ptr<HostCtl::Network::DVSwitch>> switches;
    switches.reserve(records.size());
    for (DVSwitchRecord& record : records) {
        switches.push_back(
            std::make_unique<DVSwitchImpl>(std::make_unique<DVSwitchRecord>(std::move(record))));
    }
    return switches;
}

}  // namespace

std::string PortsetImpl::GetSwitchKey() const {
    PassOperation("PortsetImpl::GetSwitchKey", switchKey_);
    return switchKey_;
}

DVSwitchImpl::DVSwitchImpl(std::unique_ptr<DVSwitchRecord> record)
    : PortsetImpl(record->id), record_(std::move(record)) {}

DVSwitchImpl::~DVSwitchImpl() = default;

std::string DVSwitchImpl::GetName() const {
    PassOperation("Portset::GetName", record_->name);
    return record_->name;
}

std::string DVSwitchImpl::GetClass() const {
    PassOperation("Portset::GetClass", record_->name);
    return record_->className;
}

std::uint32_t DVSwitchImpl::GetNumPorts() const {
    PassOperation("Portset::GetNumPorts", record_->name);
    return record_->ports;
}

std::uint32_t DVSwitchImpl::GetNumUsedPorts() const {
    PassOperation("Portset::GetNumUsedPorts", record_->name);
    return static_cast<std::uint32_t>(
        std::count_if(record_->dvports.begin(), record_->dvports.end(),
                      [](const DVPortRecord& port) { return port.inUse; }));
}

std::uint32_t DVSwitchImpl::GetNumConfiguredPorts() const {
    PassOperation("DVSwitchImpl::GetNumConfiguredPorts", record_->name);
    return static_cast<std::uint32_t>(record_->dvports.size());
}

// A distributed switch's teaming is its controller's: every uplink counts as active.
std::vector<std::string> DVSwitchImpl::GetUplinks(bool) const {
    PassOperation("Portset::GetUplinks", record_->name);
    std::vector<std::string> uplinks;
    for (const auto& uplink : record_->uplinks) {
        uplinks.push_back(uplink.first);
    }
    return uplinks;
}

std::string DVSwitchImpl::GetDvsName() const {
    PassOperation("DVSwitch::GetDvsName", record_->name);
    return record_->name;
}

std::string DVSwitchImpl::GetDvsId() const {
    PassOperation("DVSwitch::GetDvsId", record_->name);
    return record_->id;
}

std::map<std::string, DVPortParam> DVSwitchImpl::GetUplinkPorts() const {
    PassOperation("DVSwitch::GetUplinkPorts", record_->name);
    std::map<std::string, DVPortParam> ports;
    for (const auto& [nic, dvport] : record_->uplinks) {
        ports[nic] = DVPortParam{record_->id, dvport, 0};
    }
    return ports;
}

void DVSwitchImpl::GetDVPortIds(std::vector<std::string>& uplinkPorts,
                                std::vector<std::string>& ports, bool uplinksOnly) const {
    PassOperation("DVSwitch::GetDVPortIds", record_->name);
    for (const DVPortRecord& port : record_->dvports) {
        const bool isUplink =
            std::any_of(record_->uplinks.begin(), record_->uplinks.end(),
                        [&port](const auto& uplink) { return uplink.second == port.id; });
        if (isUplink) {
            uplinkPorts.push_back(port.id);
        }
        if (isUplink || !uplinksOnly) {
            ports.push_back(port.id);
        }
    }
}

std::unique_ptr<DVPort> DVSwitchImpl::GetDVPortById(const std::string& id) const {
    PassOperation("DVSwitch::GetDVPortById", record_->name);
    const bool found = std::any_of(record_->dvports.begin(), record_->dvports.end(),
                                   [&id](const DVPortRecord& port) { return port.id == id; });
    if (!found) {
        return nullptr;
    }
    return std::make_unique<DVPortImpl>(DVPortParam{record_->id, id, 0});
}

void DVSwitchImpl::GetLagConfigs(std::vector<LagConfig>& list) const {
    PassOperation("DVSwitch::GetLagConfigs", record_->name);
    for (const HostSim::Dvs::Lag& lag : record_->lags) {
        LagConfig config;
        config.lagId = std::to_string(lag.id);
        config.lagName = lag.name;
        config.mode = lag.mode;
        config.loadBalance = lag.loadBalance;
        config.portCount = lag.portCount;
        for (const DVPortRecord& port : record_->dvports) {
            for (const auto& [nic, dvport] : record_->uplinks) {
                if (dvport == port.id && port.name.starts_with(lag.name + "-")) {
                    config.nicByPort[port.name] = nic;
                }
            }
        }
        config.options["timeout"] =
            std::any_of(lag.nics.begin(), lag.nics.end(),
                        [](const HostSim::Dvs::LagNic& nic) {
                            return (nic.portState & HostSim::Dvs::kTimeoutBit) != 0;
                        })
                ? "short"
                : "long";
        list.push_back(std::move(config));
    }
}

void DVSwitchImpl::GetLacpStatus(std::vector<LagStatus>& list) const {
    PassOperation("DVSwitch::GetLacpStatus", record_->name);
    for (const HostSim::Dvs::Lag& lag : record_->lags) {
        if (!lag.running) {
            continue;
        }
        LagStatus status;
        status.lagId = lag.id;
        status.portCount = lag.portCount;
        status.mode = lag.mode;
        status.loadBalance = lag.loadBalance;
        CopyText(status.lagName, lag.name);
        CopyText(status.dvsName, record_->name);
        for (const HostSim::Dvs::LagNic& nic : lag.nics) {
            status.nics.push_back(PackNic(nic));
        }
        list.push_back(std::move(status));
    }
}

bool DVSwitchImpl::IsLacpStateOnDpu() const {
    PassOperation("DVSwitch::IsLacpStateOnDpu", record_->name);
    return record_->lacpOnDpu;
}

void DVSwitchImpl::SetLacpTimeout(int lagId, bool timeout, const std::string& nicName) {
    PassOperation("DVSwitch::SetLacpTimeout", record_->name);
    HostSim::Database& database = Store();
    HostSim::WriteTransaction transaction(database);
    auto current = HostSim::Dvs::LoadSwitch(database, record_->name);
    if (!current) {
        throw HostCtlException(HostSim::Dvs::NoSuchSwitch(record_->name));
    }
    auto lag = std::find_if(
        current->lags.begin(), current->lags.end(), [lagId](const HostSim::Dvs::Lag& candidate) {
            return lagId >= 0 && candidate.id == static_cast<std::uint32_t>(lagId);
        });
    if (lag == current->lags.end()) {
        throw HostCtlException("There is no LAG " + std::to_string(lagId) +
                               " on distributed switch " + record_->name);
    }
    bool matched = nicName.empty();
    for (HostSim::Dvs::LagNic& nic : lag->nics) {
        if (nicName.empty() || nic.nic == nicName) {
            SetTimeout(nic, timeout);
            matched = true;
        }
    }
    if (!matched) {
        throw HostCtlException("NIC " + nicName + " is not in LAG " + std::to_string(lagId) +
                               " of distributed switch " + record_->name);
    }
    HostSim::Dvs::UpdateLags(database, record_->name, current->lags);
    transaction.Commit();
    record_->lags = std::move(current->lags);
}

std::string DVSwitchImpl::GetCdpStatusString() const {
    PassOperation("DVSwitchImpl::GetCdpStatusString", record_->name);
    return kCdpStatusWords[record_->cdpStatus];
}

std::uint32_t DVSwitchImpl::GetMTU() const {
    PassOperation("DVSwitchImpl::GetMTU", record_->name);
    return record_->mtu;
}

int DVSwitchImpl::GetBeaconTimeout() const {
    PassOperation("DVSwitchImpl::GetBeaconTimeout", record_->name);
    return record_->beaconTimeout;
}

bool DVSwitchImpl::IsZanvexBranded() const {
    PassOperation("DVSwitchImpl::IsZanvexBranded", record_->name);
    return record_->zanvexBranded;
}

std::vector<std::unique_ptr<DVPort>> DVSwitchImpl::GetDVPorts() const {
    PassOperation("DVSwitchImpl::GetDVPorts", record_->name);
    std::vector<std::unique_ptr<DVPort>> ports;
    ports.reserve(record_->dvports.size());
    for (const DVPortRecord& port : record_->dvports) {
        ports.push_back(std::make_unique<DVPortImpl>(std::make_unique<DVPortRecord>(port)));
    }
    return ports;
}

std::vector<std::unique_ptr<HostCtl::Network::DVSwitch>> VirtualSwitchInfoImpl::GetDVSwitches() {
    PassOperation("VirtualSwitchInfoImpl::GetDVSwitches");
    return MakeSwitches(HostSim::Dvs::LoadSwitches(Store(), false));
}

std::vector<std::unique_ptr<HostCtl::Network::DVSwitch>>
VirtualSwitchInfoImpl::GetOpaqueDVSwitches() {
    PassOperation("VirtualSwitchInfoImpl::GetOpaqueDVSwitches");
    return MakeSwitches(HostSim::Dvs::LoadSwitches(Store(), true));
}

std::unique_ptr<HostCtl::Network::DVSwitch> VirtualSwitchInfoImpl::GetDVSwitchByName(
    const std::string& name) {
    PassOperation("VirtualSwitchInfoImpl::GetDVSwitchByName", name);
    auto record = HostSim::Dvs::LoadSwitch(Store(), name);
    if (!record) {
        return nullptr;
    }
    return std::make_unique<DVSwitchImpl>(std::make_unique<DVSwitchRecord>(std::move(*record)));
}

std::vector<std::unique_ptr<HostCtl::Network::Portset>> VirtualSwitchInfoImpl::GetAllSwitches() {
    PassOperation("VirtualSwitchInfoImpl::GetAllSwitches");
    HostSim::Database& database = Store();
    std::vector<std::unique_ptr<HostCtl::Network::Portset>> switches;
    for (auto& record :
         HostSim::Vswitch::LoadSwitches(database, HostCtl::Network::PortsetGetNormal)) {
        switches.push_back(
            std::make_unique<HostSim::Vswitch::VirtualSwitchImpl>(std::move(record)));
    }
    for (auto& record : HostSim::Dvs::LoadSwitches(database, false)) {
        switches.push_back(
            std::make_unique<DVSwitchImpl>(std::make_unique<DVSwitchRecord>(std::move(record))));
    }
    for (auto& record : HostSim::Dvs::LoadSwitches(database, true)) {
        switches.push_back(
            std::make_unique<DVSwitchImpl>(std::make_unique<DVSwitchRecord>(std::move(record))));
    }
    return switches;
}

bool VirtualSwitchInfoImpl::IsLegacySwitch(const std::string& name) {
    PassOperation("VirtualSwitchInfoImpl::IsLegacySwitch", name);
    return HostSim::Vswitch::SwitchExists(Store(), name);
}

bool VirtualSwitchInfoImpl::IsDVSwitch(const std::string& name) {
    PassOperation("VirtualSwitchInfoImpl::IsDVSwitch", name);
    return HostSim::Dvs::SwitchExists(Store(), name) && !HostSim::Dvs::IsOpaque(Store(), name);
}

bool VirtualSwitchInfoImpl::IsOpaqueSwitch(const std::string& name) {
    PassOperation("VirtualSwitchInfoImpl::IsOpaqueSwitch", name);
    return HostSim::Dvs::IsOpaque(Store(), name);
}

}  // namespace KelmCtl::Network

namespace HostCtl::Network {

std::unique_ptr<DVSwitch> NetworkFactory::GetDVSwitchByName(const std::string& name) {
    HostSim::PassOperation("NetworkFactory::GetDVSwitchByName", name);
    auto record = HostSim::Dvs::LoadSwitch(HostSim::Store(), name);
    if (!record) {
        return std::make_unique<KelmCtl::Network::UnknownDVSwitch>(name);
    }
    return std::make_unique<KelmCtl::Network::DVSwitchImpl>(
        std::make_unique<KelmCtl::Network::DVSwitchRecord>(std::move(*record)));
}

std::unique_ptr<DVPort> NetworkFactory::GetDVPort(const DVPortParam& param) {
    HostSim::PassOperation("NetworkFactory::GetDVPort", param.dvPortId);
    auto port = std::make_unique<KelmCtl::Network::DVPortImpl>(param);
    if (!port->IsValid()) {
        return nullptr;
    }
    return port;
}

}  // namespace HostCtl::Network
