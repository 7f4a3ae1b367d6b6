#include "kelmctl/PnicImpl.h"

#include "hostctl/HostCtlException.h"
#include "hostsim/core/HostChoice.h"
#include "hostsim/core/Operation.h"
#include "hostsim/core/Store.h"
#include "hostsim/linux/LiveHost.h"
#include "hostsim/nic/NicStore.h"

namespace KelmCtl::Network {

using HostCtl::Lib::HostCtlException;
using HostSim::PassOperation;

namespace {

std::string NoSuchNic(const std::string& name) {
    return "There is no NIC named " + name + " on this host";
}

class PciDeviceImpl : public HostCtl::Network::PciDevice {
public:
    explicit PciDeviceImpl(const PnicImpl::Record& record)
        : nic_(record.name),
          vendor_(record.pciVendor),
          device_(record.pciDevice),
          address_(record.pciAddress) {}

    std::string GetVendorName() const override {
        PassOperation("PciDevice::GetVendorName", nic_);
        return vendor_;
    }
    std::string GetDeviceName() const override {
        PassOperation("PciDevice::GetDeviceName", nic_);
        return device_;
    }
    std::string GetAddress() const override {
        PassOperation("PciDevice::GetAddress", nic_);
        return address_;
    }

private:
    std::string nic_;
    std::string vendor_;
    std::string device_;
    std::string address_;
};

// The NIC's record as the host in force has it; none when there is no such NIC.
std::optional<PnicImpl::Record> LoadNic(const std::string& name) {
    if (auto* live = HostSim::LiveHost()) {
        return live->Nics().Load(name);
    }
    return HostSim::Nic::Load(HostSim::Store(), name);
}

}  // namespace

PnicImpl::PnicImpl(const std::string& name) {
    PassOperation("PnicImpl::PnicImpl", name);
    auto record = LoadNic(name);
    if (!record) {
        throw HostCtlException(NoSuchNic(name));
    }
    record_ = std::make_unique<Record>(std::move(*record));
}

PnicImpl::PnicImpl(std::unique_ptr<Record> record) : record_(std::move(record)) {}

PnicImpl::~PnicImpl() = default;

bool PnicImpl::IsValidPnic(const std::string& name) {
    PassOperation("PnicImpl::IsValidPnic", name);
    return LoadNic(name).has_value();
}

void PnicImpl::Refresh() {
    PassOperation("PnicImpl::Refresh", record_->name);
    auto record = LoadNic(record_->name);
    if (!record) {
        throw HostCtlException(NoSuchNic(record_->name));
    }
    *record_ = std::move(*record);
}

std::string PnicImpl::GetName() const {
    PassOperation("Pnic::GetName", record_->name);
    return record_->name;
}

std::unique_ptr<HostCtl::Network::PciDevice> PnicImpl::GetPciDevice() const {
    PassOperation("Pnic::GetPciDevice", record_->name);
    if (record_->pciAddress.empty()) {
        return nullptr;
    }
    return std::make_unique<PciDeviceImpl>(*record_);
}

// Speed and duplex are what the link negotiated, so a NIC without link reports neither.
int PnicImpl::GetDuplex() const {
    PassOperation("Pnic::GetDuplex", record_->name);
    return record_->LinkUp() ? static_cast<int>(record_->duplex) : 0;
}

bool PnicImpl::IsLinkUp() const {
    PassOperation("Pnic::IsLinkUp", record_->name);
    return record_->LinkUp();
}

bool PnicImpl::GetLinkStatus() const {
    PassOperation("Pnic::GetLinkStatus", record_->name);
    return record_->LinkUp();
}

bool PnicImpl::GetAdminStatus() const {
    PassOperation("Pnic::GetAdminStatus", record_->name);
    return record_->adminUp;
}

std::uint32_t PnicImpl::GetSpeed() const {
    PassOperation("Pnic::GetSpeed", record_->name);
    return record_->LinkUp() ? record_->speed : 0;
}

std::string PnicImpl::GetDriverName() const {
    PassOperation("Pnic::GetDriverName", record_->name);
    return record_->driver;
}

HostCtl::Network::MacAddress PnicImpl::GetMacAddress() const {
    PassOperation("Pnic::GetMacAddress", record_->name);
    return HostCtl::Network::MacAddress(record_->mac);
}

void PnicImpl::SetLinkState(bool up) {
    PassOperation("Pnic::SetLinkState", record_->name);
    if (auto* live = HostSim::LiveHost()) {
        live->Nics().SetAdminState(record_->name, up);
    } else if (!HostSim::Nic::SetAdminState(HostSim::Store(), record_->name, up)) {
        throw HostCtlException(NoSuchNic(record_->name));
    }
    record_->adminUp = up;
}

std::uint32_t PnicImpl::GetMtu() const {
    PassOperation("Pnic::GetMtu", record_->name);
    return record_->mtu;
}

std::string PnicImpl::GetDeviceDescriptor() const {
    PassOperation("Pnic::GetDeviceDescriptor", record_->name);
    if (!record_->descriptorError.empty()) {
        throw HostCtlException(record_->descriptorError);
    }
    return record_->descriptor;
}

void PnicImpl::GetPnicInfo(HostCtl::Network::PnicInfo& info) const {
    PassOperation("Pnic::GetPnicInfo", record_->name);
    if (auto* live = HostSim::LiveHost()) {
        live->Nics().GetLinkInfo(record_->name, info);
    } else {
        info = HostSim::Nic::LinkInfoFromJson(HostSim::Json::parse(record_->linkInfo));
    }
    info.linkStatus = record_->LinkUp() ? "Up" : "Down";
}

void PnicImpl::GetPauseParams(HostCtl::Network::PnicPauseParams& params) const {
    PassOperation("Pnic::GetPauseParams", record_->name);
    if (auto* live = HostSim::LiveHost()) {
        live->Nics().GetPause(record_->name, params);
        return;
    }
    params = HostSim::Nic::PauseFromJson(HostSim::Json::parse(record_->pause));
}

void PnicImpl::GetPnicDriverInfo(HostCtl::Network::PnicDriverInfo& info) const {
    PassOperation("Pnic::GetPnicDriverInfo", record_->name);
    info.driver = record_->driver;
    info.version = record_->driverVersion;
    info.firmwareVersion = record_->firmwareVersion;
    info.busInfo = record_->busInfo;
    if (auto* live = HostSim::LiveHost()) {
        live->Nics().GetDriverInfo(record_->name, info);
    }
}

}  // namespace KelmCtl::Network
