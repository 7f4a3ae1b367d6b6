// The Data Center Bridging state of one NIC, read once when the object is made.
#include "kelmctl/DcbInfoImpl.h"

#include "hostctl/HostCtlException.h"
#include "hostsim/core/Operation.h"
#include "hostsim/core/Store.h"
#include "hostsim/nicdevices/NicDevicesStore.h"

namespace KelmCtl::Network {

using HostCtl::Lib::HostCtlException;
using HostSim::Json;
using HostSim::PassOperation;

struct DcbInfoImpl::State {
    Json dcb;
};

namespace {

template <class Element, std::size_t Count>
void FillArray(const Json& json, Element (&array)[Count]) {
    for (std::size_t i = 0; i < Count && i < json.size(); ++i) {
        array[i] = json[i].get<Element>();
    }
}

}  // namespace

DcbInfoImpl::DcbInfoImpl(const std::string& nicName) : nic_(nicName) {
    PassOperation("DcbInfoImpl::DcbInfoImpl", nic_);
    auto device = HostSim::NicDevices::Load(HostSim::Store(), nic_);
    if (!device && !HostSim::NicDevices::NicExists(HostSim::Store(), nic_)) {
        throw HostCtlException("There is no NIC named " + nic_ + " on this host");
    }
    if (!device || device->dcb.empty()) {
        throw HostCtlException("NIC " + nic_ + " does not support DCB");
    }
    state_ = std::make_unique<State>(State{Json::parse(device->dcb)});
}

DcbInfoImpl::~DcbInfoImpl() = default;

unsigned int DcbInfoImpl::GetMode() const {
    PassOperation("DcbInfoImpl::GetMode", nic_);
    return state_->dcb["mode"].get<unsigned>();
}

bool DcbInfoImpl::IsEnabled() const {
    PassOperation("DcbInfoImpl::IsEnabled", nic_);
    return state_->dcb["enabled"].get<bool>();
}

HostCtl::Network::DcbCapabilities DcbInfoImpl::GetCapabilities() const {
    PassOperation("DcbInfoImpl::GetCapabilities", nic_);
    const Json& json = state_->dcb["capabilities"];
    return {json["priorityGroup"].get<bool>() ? std::uint8_t{1} : std::uint8_t{0},
            json["priorityFlowControl"].get<bool>() ? std::uint8_t{1} : std::uint8_t{0},
            json["upToTcMap"].get<bool>() ? std::uint8_t{1} : std::uint8_t{0},
            json["pgTrafficClasses"].get<std::uint8_t>(),
            json["pfcTrafficClasses"].get<std::uint8_t>()};
}

bool DcbInfoImpl::IsPfcEnabled() const {
    PassOperation("DcbInfoImpl::IsPfcEnabled", nic_);
    return state_->dcb["pfcEnabled"].get<bool>();
}

unsigned char DcbInfoImpl::GetPfcConfig() const {
    PassOperation("DcbInfoImpl::GetPfcConfig", nic_);
    return state_->dcb["pfcConfig"].get<unsigned char>();
}

HostCtl::Network::DcbIeeeEtsConfig DcbInfoImpl::GetIeeeEtsConfig() const {
    PassOperation("DcbInfoImpl::GetIeeeEtsConfig", nic_);
    const Json& json = state_->dcb["ets"];
    HostCtl::Network::DcbIeeeEtsConfig ets;
    ets.willing = json["willing"].get<std::uint8_t>();
    ets.supportedCapacity = json["supportedCapacity"].get<std::uint8_t>();
    ets.creditBasedShaper = json["creditBasedShaper"].get<std::string>();
    FillArray(json["txBandwidth"], ets.txBandwidth);
    FillArray(json["rxBandwidth"], ets.rxBandwidth);
    FillArray(json["tsaTable"], ets.tsaTable);
    FillArray(json["priorityAssignment"], ets.priorityAssignment);
    FillArray(json["recommendedBandwidth"], ets.recommendedBandwidth);
    FillArray(json["recommendedTsa"], ets.recommendedTsa);
    FillArray(json["recommendedPriority"], ets.recommendedPriority);
    return ets;
}

HostCtl::Network::DcbIeeePfcConfig DcbInfoImpl::GetIeeePfcConfig() const {
    PassOperation("DcbInfoImpl::GetIeeePfcConfig", nic_);
    const Json& json = state_->dcb["pfc"];
    HostCtl::Network::DcbIeeePfcConfig pfc;
    pfc.trafficClasses = json["trafficClasses"].get<std::uint8_t>();
    pfc.pfcConfig = json["pfcConfig"].get<std::uint8_t>();
    pfc.macsecBypass = json["macsecBypass"].get<std::uint8_t>();
    pfc.delay = json["delay"].get<std::uint8_t>();
    FillArray(json["sent"], pfc.sent);
    FillArray(json["received"], pfc.received);
    return pfc;
}

std::vector<HostCtl::Network::DcbAppInfo> DcbInfoImpl::GetAppInfo() const {
    PassOperation("DcbInfoImpl::GetAppInfo", nic_);
    std::vector<HostCtl::Network::DcbAppInfo> apps;
    for (const auto& app : state_->dcb["apps"]) {
        apps.push_back({app["appType"].get<std::string>(), app["protocolId"].get<std::string>(),
                        app["userPriority"].get<std::string>()});
    }
    return apps;
}

}  // namespace KelmCtl::Network
