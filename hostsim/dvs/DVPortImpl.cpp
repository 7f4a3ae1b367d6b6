// Host operations of a port of a distributed switch.
#include "kelmctl/DVPortImpl.h"

#include <algorithm>

#include "hostctl/HostCtlException.h"
#include "hostsim/core/Operation.h"
#include "hostsim/core/Store.h"
#include "hostsim/dvs/DvsStore.h"

namespace KelmCtl::Network {

using HostCtl::Network::DVPortParam;
using HostSim::PassOperation;

namespace {

std::unique_ptr<DVPortRecord> LoadPort(const DVPortParam& param) {
    auto record = HostSim::Dvs::LoadSwitchById(HostSim::Store(), param.dvsId);
    if (!record) {
        return nullptr;
    }
    for (DVPortRecord& port : record->dvports) {
        if (port.id == param.dvPortId) {
            return std::make_unique<DVPortRecord>(std::move(port));
        }
    }
    return nullptr;
}

}  // namespace

DVPortImpl::DVPortImpl(const DVPortParam& param) : param_(param) {
    PassOperation("DVPortImpl::DVPortImpl", param.dvPortId);
    record_ = LoadPort(param_);
}

DVPortImpl::DVPortImpl(const std::string& dvPortId, const std::string& switchKey)
    : DVPortImpl(DVPortParam{switchKey, dvPortId, 0}) {}

DVPortImpl::DVPortImpl(std::unique_ptr<DVPortRecord> record)
    : param_{record->dvsId, record->id, 0}, record_(std::move(record)) {}

DVPortImpl::~DVPortImpl() = default;

const DVPortRecord& DVPortImpl::Record() const {
    if (!record_) {
        throw HostCtl::Lib::HostCtlException("There is no DVPort " + param_.dvPortId +
                                             " on the distributed switch with id " + param_.dvsId);
    }
    return *record_;
}

std::string DVPortImpl::GetPortsetName() const {
    PassOperation("ConnectionPoint::GetPortsetName", param_.dvPortId);
    return Record().dvsName;
}

bool DVPortImpl::IsValid() const {
    PassOperation("ConnectionPoint::IsValid", param_.dvPortId);
    return record_ != nullptr;
}

std::string DVPortImpl::GetName() const {
    PassOperation("DVPort::GetName", param_.dvPortId);
    return Record().name;
}

std::string DVPortImpl::GetDVPortgroupId() const {
    PassOperation("DVPort::GetDVPortgroupId", param_.dvPortId);
    return Record().portGroup;
}

HostCtl::Network::DVPortLacpConfig DVPortImpl::GetLacpConfig() const {
    PassOperation("DVPort::GetLacpConfig", param_.dvPortId);
    return Record().lacp;
}

std::string DVPortImpl::GetPortId() const {
    PassOperation("DVPortImpl::GetPortId", param_.dvPortId);
    return Record().id;
}

bool DVPortImpl::IsInUse(std::vector<std::string>& clients) const {
    PassOperation("DVPortImpl::IsInUse", param_.dvPortId);
    const DVPortRecord& record = Record();
    clients = record.clients;
    return record.inUse;
}

std::uint32_t DVPortImpl::GetConnectionId() const {
    PassOperation("DVPortImpl::GetConnectionId", param_.dvPortId);
    return param_.connectionId;
}

void DVPortImpl::SetConnectionId(std::uint32_t connectionId) {
    PassOperation("DVPortImpl::SetConnectionId", param_.dvPortId);
    param_.connectionId = connectionId;
}

DVPortParam DVPortImpl::GetDVPortParam() const {
    PassOperation("DVPortImpl::GetDVPortParam", param_.dvPortId);
    return param_;
}

}  // namespace KelmCtl::Network
