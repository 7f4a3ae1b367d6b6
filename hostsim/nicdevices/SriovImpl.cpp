// SR-IOV NICs and their virtual functions, on the network model root.
#include <algorithm>
#include <set>

#include "hostctl/HostCtlException.h"
#include "hostctl/Misc.h"
#include "hostsim/core/HostChoice.h"
#include "hostsim/core/Operation.h"
#include "hostsim/core/Store.h"
#include "hostsim/linux/LiveHost.h"
#include "hostsim/nic/NicStore.h"
#include "hostsim/nicdevices/NicDevicesStore.h"
#include "kelmctl/NetworkInfoImpl.h"
#include "kelmctl/PnicImpl.h"

namespace KelmCtl::Network {

using HostCtl::Lib::HostCtlException;
using HostSim::Json;
using HostSim::PassOperation;

namespace {

// The SR-IOV record of a NIC with SR-IOV enabled; null otherwise.
std::optional<Json> EnabledSriov(const HostSim::NicDevices::Device& device) {
    if (device.sriov.empty()) {
        return std::nullopt;
    }
    Json sriov = Json::parse(device.sriov);
    if (!sriov.value("enabled", false)) {
        return std::nullopt;
    }
    return sriov;
}

Json SriovOf(const std::string& name) {
    auto device = HostSim::NicDevices::Load(HostSim::Store(), name);
    if (!device) {
        if (!HostSim::NicDevices::NicExists(HostSim::Store(), name)) {
            throw HostCtlException("There is no NIC named " + name + " on this host");
        }
    } else if (auto sriov = EnabledSriov(*device)) {
        return *sriov;
    }
    throw HostCtlException("SR-IOV is not enabled on NIC " + name);
}

// "0000:3b:02.1" in decimal fields, "00000:059:02.1"; an address of another form as it is.
std::string DecimalPciAddress(const std::string& hex) {
    unsigned domain = 0;
    unsigned bus = 0;
    unsigned slot = 0;
    unsigned function = 0;
    if (std::sscanf(hex.c_str(), "%x:%x:%x.%x", &domain, &bus, &slot, &function) != 4) {
        return hex;
    }
    return HostCtl::Misc::StrPrintf("%05u:%03u:%02u.%u", domain, bus, slot, function);
}

}  // namespace

std::vector<std::unique_ptr<HostCtl::Network::Pnic>> NetworkInfoImpl::GetSriovNics() {
    PassOperation("NetworkInfoImpl::GetSriovNics");
    if (auto* live = HostSim::LiveHost()) {
        std::vector<std::unique_ptr<HostCtl::Network::Pnic>> pnics;
        for (auto& record : live->Nics().LoadSriovNics()) {
            pnics.push_back(std::make_unique<PnicImpl>(std::move(record)));
        }
        return pnics;
    }
    std::set<std::string> enabled;
    for (const auto& device : HostSim::NicDevices::LoadAll(HostSim::Store())) {
        if (EnabledSriov(device)) {
            enabled.insert(device.nic);
        }
    }
    std::vector<std::unique_ptr<HostCtl::Network::Pnic>> pnics;
    for (auto& record : HostSim::Nic::LoadAll(HostSim::Store())) {
        if (enabled.count(record->name) != 0) {
            pnics.push_back(std::make_unique<PnicImpl>(std::move(record)));
        }
    }
    return pnics;
}

std::unique_ptr<HostCtl::Network::Pnic> NetworkInfoImpl::GetSriovNicByName(
    const std::string& name) {
    PassOperation("NetworkInfoImpl::GetSriovNicByName", name);
    if (auto* live = HostSim::LiveHost()) {
        for (auto& record : live->Nics().LoadSriovNics()) {
            if (record->name == name) {
                return std::make_unique<PnicImpl>(std::move(record));
            }
        }
        return nullptr;
    }
    auto device = HostSim::NicDevices::Load(HostSim::Store(), name);
    if (!device || !EnabledSriov(*device)) {
        return nullptr;
    }
    auto record = HostSim::Nic::Load(HostSim::Store(), name);
    if (!record) {
        return nullptr;
    }
    return std::make_unique<PnicImpl>(std::make_unique<PnicImpl::Record>(std::move(*record)));
}

std::vector<HostCtl::Network::SriovNicVFInfo> NetworkInfoImpl::GetSriovNicVFInfo(
    const std::string& name) {
    PassOperation("NetworkInfoImpl::GetSriovNicVFInfo", name);
    if (auto* live = HostSim::LiveHost()) {
        auto functions = live->Nics().GetVirtualFunctions(name);
        for (auto& function : functions) {
            function.pciAddress = DecimalPciAddress(function.hexPciAddress);
        }
        return functions;
    }
    std::vector<HostCtl::Network::SriovNicVFInfo> functions;
    const Json sriov = SriovOf(name);
    for (const auto& vf : sriov["virtualFunctions"]) {
        const std::string hex = vf["pciAddress"].get<std::string>();
        functions.push_back({vf["id"].get<std::uint8_t>(),
                             static_cast<std::uint8_t>(vf["active"].get<bool>() ? 1 : 0),
                             DecimalPciAddress(hex), hex, vf["ownerWorldId"].get<std::string>()});
    }
    return functions;
}

void NetworkInfoImpl::GetSriovNicVFStats(HostCtl::Network::SriovNicVFStats* stats,
                                         const std::string& name, int vfId) {
    PassOperation("NetworkInfoImpl::GetSriovNicVFStats", name);
    if (auto* live = HostSim::LiveHost()) {
        live->Nics().GetVirtualFunctionStats(name, vfId, *stats);
        return;
    }
    const Json sriov = SriovOf(name);
    for (const auto& vf : sriov["virtualFunctions"]) {
        if (vf["id"].get<int>() != vfId) {
            continue;
        }
        const auto counters = vf["stats"].get<std::vector<std::uint64_t>>();
        std::uint64_t* fields[] = {
            &stats->rxUnicastPkts,      &stats->rxUnicastBytes,   &stats->rxMulticastPkts,
            &stats->rxMulticastBytes,   &stats->rxBroadcastPkts,  &stats->rxBroadcastBytes,
            &stats->rxOutOfBufferDrops, &stats->rxErrorDrops,     &stats->rxLroPkts,
            &stats->rxLroBytes,         &stats->txUnicastPkts,    &stats->txUnicastBytes,
            &stats->txMulticastPkts,    &stats->txMulticastBytes, &stats->txBroadcastPkts,
            &stats->txBroadcastBytes,   &stats->txErrors,         &stats->txDiscards,
            &stats->txTsoPkts,          &stats->txTsoBytes,
        };
        for (std::size_t i = 0; i < std::size(fields) && i < counters.size(); ++i) {
            *fields[i] = counters[i];
        }
        return;
    }
    throw HostCtlException("NIC " + name + " has no virtual function " + std::to_string(vfId));
}

}  // namespace KelmCtl::Network
