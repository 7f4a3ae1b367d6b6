// Host operations of port groups, and their look-ups.
#include "kelmctl/PortGroupImpl.h"

#include "hostctl/HostCtlException.h"
#include "hostctl/NetworkInfo.h"
#include "hostsim/core/Operation.h"
#include "hostsim/core/Store.h"
#include "hostsim/vswitch/VirtualSwitchImpl.h"
#include "hostsim/vswitch/VswitchRules.h"
#include "hostsim/vswitch/VswitchStore.h"
#include "kelmctl/NetworkInfoImpl.h"

namespace KelmCtl::Network {

using HostCtl::Lib::HostCtlException;
using HostCtl::Network::NicTeamingPolicy;
using HostCtl::Network::PortSecurityPolicy;
using HostCtl::Network::ShapingPolicy;
using HostSim::PassOperation;
using HostSim::Store;

namespace {

std::string NoSuchPortGroup(const std::string& name) {
    return "There is no port group named " + name;
}

// Runs `write` on the port group's row in a write transaction, once the port group is known to
// be there still.
template <class Write>
void ChangePortGroup(const std::string& name, Write write) {
    HostSim::Database& database = Store();
    HostSim::WriteTransaction transaction(database);
    auto current = HostSim::Vswitch::LoadPortGroup(database, name);
    if (!current) {
        throw HostCtlException(NoSuchPortGroup(name));
    }
    write(database, *current);
    transaction.Commit();
}

void WritePolicy(const std::string& name, const char* sql, const std::string& json) {
    ChangePortGroup(name, [&](HostSim::Database& database, const PortGroupRecord&) {
        database.Query(sql).Bind(1, json).Bind(2, name).Run();
    });
}

// A port group listed by name is read in full when first asked for more than its name.
PortGroupRecord& Detailed(PortGroupRecord& record) {
    if (!record.detailed) {
        auto loaded = HostSim::Vswitch::LoadPortGroup(Store(), record.name);
        if (!loaded) {
            throw HostCtlException(NoSuchPortGroup(record.name));
        }
        record = std::move(*loaded);
    }
    return record;
}

}  // namespace

PortGroupImpl::PortGroupImpl(const std::string& name) {
    PassOperation("PortGroupImpl::PortGroupImpl", name);
    auto record = HostSim::Vswitch::LoadPortGroup(Store(), name);
    if (!record) {
        throw HostCtlException(NoSuchPortGroup(name));
    }
    record_ = std::make_unique<PortGroupRecord>(std::move(*record));
}

PortGroupImpl::PortGroupImpl(std::unique_ptr<PortGroupRecord> record)
    : record_(std::move(record)) {}

PortGroupImpl::~PortGroupImpl() = default;

std::string PortGroupImpl::GetName() const {
    PassOperation("PortGroup::GetName", record_->name);
    return record_->name;
}

std::string PortGroupImpl::GetPortsetName() const {
    PassOperation("ConnectionPoint::GetPortsetName", record_->name);
    return record_->switchName;
}

bool PortGroupImpl::IsValid() const {
    PassOperation("ConnectionPoint::IsValid", record_->name);
    return HostSim::Vswitch::LoadPortGroup(Store(), record_->name).has_value();
}

std::uint32_t PortGroupImpl::GetActiveClients() const {
    PassOperation("PortGroup::GetActiveClients", record_->name);
    return static_cast<std::uint32_t>(Detailed(*record_).users.size());
}

std::uint16_t PortGroupImpl::GetVlanId() const {
    PassOperation("PortGroup::GetVlanId", record_->name);
    return Detailed(*record_).vlanId;
}

void PortGroupImpl::SetVlanId(int vlanId) {
    PassOperation("PortGroup::SetVlanId", record_->name);
    HostSim::Vswitch::CheckVlanId(vlanId);
    ChangePortGroup(record_->name, [&](HostSim::Database& database, const PortGroupRecord&) {
        database.Query("UPDATE vswitch_portgroup SET vlan_id = ?1 WHERE name = ?2")
            .Bind(1, static_cast<std::int64_t>(vlanId))
            .Bind(2, record_->name)
            .Run();
    });
    record_->vlanId = static_cast<std::uint16_t>(vlanId);
}

std::unique_ptr<HostCtl::Network::VirtualSwitch> PortGroupImpl::GetVirtualSwitch() const {
    PassOperation("PortGroup::GetVirtualSwitch", record_->name);
    auto record = HostSim::Vswitch::LoadSwitch(Store(), record_->switchName, std::nullopt);
    if (!record) {
        throw HostCtlException("There is no virtual switch named " + record_->switchName);
    }
    return std::make_unique<HostSim::Vswitch::VirtualSwitchImpl>(std::move(*record));
}

PortSecurityPolicy PortGroupImpl::GetEffectiveSecurityPolicy() const {
    PassOperation("PortGroup::GetEffectiveSecurityPolicy", record_->name);
    return Detailed(*record_).Effective().security;
}

PortSecurityPolicy PortGroupImpl::GetSecurityPolicy() const {
    PassOperation("PortGroup::GetSecurityPolicy", record_->name);
    return Detailed(*record_).own.security;
}

void PortGroupImpl::SetSecurityPolicy(const PortSecurityPolicy& policy) {
    PassOperation("PortGroup::SetSecurityPolicy", record_->name);
    WritePolicy(record_->name, "UPDATE vswitch_portgroup SET security = ?1 WHERE name = ?2",
                HostSim::Vswitch::SecurityToJson(policy).dump());
    record_->own.security = policy;
}

ShapingPolicy PortGroupImpl::GetEffectiveShapingPolicy() const {
    PassOperation("PortGroup::GetEffectiveShapingPolicy", record_->name);
    return Detailed(*record_).Effective().shaping;
}

ShapingPolicy PortGroupImpl::GetShapingPolicy() const {
    PassOperation("PortGroup::GetShapingPolicy", record_->name);
    return Detailed(*record_).own.shaping;
}

void PortGroupImpl::SetShapingPolicy(const ShapingPolicy& policy) {
    PassOperation("PortGroup::SetShapingPolicy", record_->name);
    WritePolicy(record_->name, "UPDATE vswitch_portgroup SET shaping = ?1 WHERE name = ?2",
                HostSim::Vswitch::ShapingToJson(policy).dump());
    record_->own.shaping = policy;
}

NicTeamingPolicy PortGroupImpl::GetEffectiveTeamingPolicy() const {
    PassOperation("PortGroup::GetEffectiveTeamingPolicy", record_->name);
    return Detailed(*record_).Effective().teaming;
}

NicTeamingPolicy PortGroupImpl::GetTeamingPolicy() const {
    PassOperation("PortGroup::GetTeamingPolicy", record_->name);
    return Detailed(*record_).own.teaming;
}

void PortGroupImpl::SetTeamingPolicy(const NicTeamingPolicy& policy) {
    PassOperation("PortGroup::SetTeamingPolicy", record_->name);
    ChangePortGroup(record_->name,
                    [&](HostSim::Database& database, const PortGroupRecord& current) {
                        HostSim::Vswitch::CheckTeaming(
                            policy, HostSim::Vswitch::LoadUplinks(database, current.switchName),
                            "port group " + current.name);
                        database.Query("UPDATE vswitch_portgroup SET teaming = ?1 WHERE name = ?2")
                            .Bind(1, HostSim::Vswitch::TeamingToJson(policy).dump())
                            .Bind(2, current.name)
                            .Run();
                    });
    record_->own.teaming = policy;
}

std::vector<std::unique_ptr<HostCtl::Network::PortGroup>> NetworkInfoImpl::GetAllPortGroups(
    HostCtl::Network::PortsetGetType type) {
    PassOperation("NetworkInfoImpl::GetAllPortGroups");
    std::vector<std::unique_ptr<HostCtl::Network::PortGroup>> portGroups;
    for (PortGroupRecord& record : HostSim::Vswitch::LoadPortGroups(Store(), type)) {
        portGroups.push_back(
            std::make_unique<PortGroupImpl>(std::make_unique<PortGroupRecord>(std::move(record))));
    }
    return portGroups;
}

}  // namespace KelmCtl::Network

namespace HostCtl::Network {

std::unique_ptr<PortGroup> NetworkFactory::GetPortGroupByName(const std::string& name) {
    HostSim::PassOperation("NetworkFactory::GetPortGroupByName", name);
    auto record = HostSim::Vswitch::LoadPortGroup(HostSim::Store(), name);
    if (!record) {
        return nullptr;
    }
    return std::make_unique<KelmCtl::Network::PortGroupImpl>(
        std::make_unique<KelmCtl::Network::PortGroupRecord>(std::move(*record)));
}

}  // namespace HostCtl::Network
