#include "hostctl/SmartNic.h"
#include "hostsim/core/HostChoice.h"
#include "hostsim/core/Operation.h"
#include "hostsim/core/Store.h"
#include "hostsim/nic/ListedDpus.h"
#include "hostsim/nic/NicStore.h"

namespace HostCtl::SmartNic {

namespace {

class SmartNicImpl : public SmartNic {
public:
    SmartNicImpl(std::string nic, std::string id) : nic_(std::move(nic)), id_(std::move(id)) {}

    const std::string& GetId() const override {
        HostSim::PassOperation("SmartNic::GetId", nic_);
        return id_;
    }

private:
    std::string nic_;
    std::string id_;
};

}  // namespace

std::unique_ptr<SmartNic> SmartNicInfo::GetSmartNicByPnic(const std::string& pnicName) {
    HostSim::PassOperation("SmartNicInfo::GetSmartNicByPnic", pnicName);
    // No DPU backs a NIC of a Linux host.
    if (HostSim::LiveHost() != nullptr) {
        return nullptr;
    }
    auto listed = HostSim::Nic::ListedDpuId(pnicName);
    std::string id = listed ? std::move(*listed) : HostSim::Nic::DpuId(HostSim::Store(), pnicName);
    if (id.empty()) {
        return nullptr;
    }
    return std::make_unique<SmartNicImpl>(pnicName, std::move(id));
}

}  // namespace HostCtl::SmartNic
