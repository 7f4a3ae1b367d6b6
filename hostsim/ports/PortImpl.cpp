// Host operations of ports, of the ports of a switch and of a NIC, and of worlds.
#include "kelmctl/PortImpl.h"

#include "hostctl/HostCtlException.h"
#include "hostctl/VirtualSwitch.h"
#include "hostsim/core/Operation.h"
#include "hostsim/core/Store.h"
#include "hostsim/ports/PortsStore.h"
#include "kelmctl/PnicImpl.h"
#include "kelmctl/WorldImpl.h"

namespace KelmCtl::Network {

using HostSim::PassOperation;

namespace {

std::string IdText(std::uint32_t id) {
    return std::to_string(id);
}

}  // namespace

PortImpl::PortImpl(std::unique_ptr<PortRecord> record) : record_(std::move(record)) {}

PortImpl::~PortImpl() = default;

std::uint32_t PortImpl::GetPortId() const {
    PassOperation("Port::GetPortId", IdText(record_->id));
    return record_->id;
}

std::uint32_t PortImpl::GetId() const {
    PassOperation("PortImpl::GetId", IdText(record_->id));
    return record_->id;
}

int PortImpl::GetType() const {
    PassOperation("PortImpl::GetType", IdText(record_->id));
    return record_->type;
}

std::uint32_t PortImpl::GetWorldLeader() const {
    PassOperation("PortImpl::GetWorldLeader", IdText(record_->id));
    return record_->world;
}

HostCtl::Network::PortByteStats PortImpl::GetPortStats() const {
    PassOperation("PortImpl::GetPortStats", IdText(record_->id));
    HostSim::Ports::LoadPortDetail(HostSim::Store(), *record_);
    return HostSim::Ports::ByteStatsFromJson(HostSim::Json::parse(record_->stats).at("bytes"));
}

void PortImpl::GetPacketStats(HostCtl::Network::PacketStats& stats) const {
    PassOperation("PortImpl::GetPacketStats", IdText(record_->id));
    HostSim::Ports::LoadPortDetail(HostSim::Store(), *record_);
    stats = HostSim::Ports::PacketStatsFromJson(HostSim::Json::parse(record_->stats).at("packets"));
}

std::vector<std::unique_ptr<HostCtl::Network::FilterStats>> PortImpl::GetFilterStats() const {
    PassOperation("PortImpl::GetFilterStats", IdText(record_->id));
    HostSim::Ports::LoadPortDetail(HostSim::Store(), *record_);
    std::vector<std::unique_ptr<HostCtl::Network::FilterStats>> filters;
    for (const HostSim::Json& filter : HostSim::Json::parse(record_->filters)) {
        filters.push_back(std::make_unique<HostCtl::Network::FilterStats>(
            HostSim::Ports::FilterFromJson(filter)));
    }
    return filters;
}

std::string PortImpl::GetPortGroupName() const {
    PassOperation("PortImpl::GetPortGroupName", IdText(record_->id));
    return record_->portGroup;
}

std::string PortImpl::GetDVPortID() const {
    PassOperation("PortImpl::GetDVPortID", IdText(record_->id));
    return record_->dvport;
}

std::vector<HostCtl::Network::MacAddress> PortImpl::GetMacAddresses() const {
    PassOperation("PortImpl::GetMacAddresses", IdText(record_->id));
    std::vector<HostCtl::Network::MacAddress> macs;
    for (const std::string& mac : record_->macs) {
        macs.emplace_back(mac);
    }
    return macs;
}

HostCtl::Network::Ipv4Address PortImpl::GetPortClientIpv4Address() const {
    PassOperation("PortImpl::GetPortClientIpv4Address", IdText(record_->id));
    return HostCtl::Network::Ipv4Address(record_->ip);
}

std::string PortImpl::GetSchedTeamUplink() const {
    PassOperation("PortImpl::GetSchedTeamUplink", IdText(record_->id));
    return record_->teamUplink;
}

std::unique_ptr<HostCtl::Network::Port> PnicImpl::GetPort() const {
    const std::string name = GetName();
    PassOperation("PnicImpl::GetPort", name);
    auto record = HostSim::Ports::LoadUplinkPort(HostSim::Store(), name);
    if (!record) {
        throw HostCtl::Lib::HostCtlException("NIC " + name + " has no port on any switch");
    }
    return std::make_unique<PortImpl>(std::make_unique<PortRecord>(std::move(*record)));
}

}  // namespace KelmCtl::Network

namespace HostCtl::Network {

std::vector<std::unique_ptr<Port>> Portset::GetPorts() const {
    const std::string name = GetName();
    HostSim::PassOperation("Portset::GetPorts", name);
    std::vector<std::unique_ptr<Port>> ports;
    auto records = HostSim::Ports::LoadPortsOf(HostSim::Store(), name);
    ports.reserve(records.size());
    for (auto& record : records) {
        ports.push_back(std::make_unique<KelmCtl::Network::PortImpl>(
            std::make_unique<KelmCtl::Network::PortRecord>(std::move(record))));
    }
    return ports;
}

}  // namespace HostCtl::Network

namespace KelmCtl::Resource {

using HostSim::PassOperation;

WorldImpl::WorldImpl(std::uint32_t worldId) : worldId_(worldId) {
    PassOperation("WorldImpl::WorldImpl", std::to_string(worldId));
    auto name = HostSim::Ports::LoadWorldName(HostSim::Store(), worldId);
    if (!name) {
        throw HostCtl::Lib::HostCtlException("There is no world " + std::to_string(worldId));
    }
    name_ = std::move(*name);
}

std::uint32_t WorldImpl::GetWorldId() const {
    PassOperation("WorldImpl::GetWorldId", std::to_string(worldId_));
    return worldId_;
}

std::string WorldImpl::GetWorldName() const {
    PassOperation("WorldImpl::GetWorldName", std::to_string(worldId_));
    return name_;
}

std::vector<std::uint32_t> ResourceInfoImpl::GetWorldIds() {
    PassOperation("ResourceInfoImpl::GetWorldIds");
    return HostSim::Ports::LoadWorldIds(HostSim::Store());
}

}  // namespace KelmCtl::Resource
