// Host operations of one Kelm interface.
#include "hostsim/kelmnic/KelmNicImpl.h"

#include <algorithm>

#include "hostctl/HostCtlException.h"
#include "hostsim/core/Operation.h"
#include "hostsim/core/Store.h"
#include "hostsim/routing/RoutingStore.h"
#include "kelmctl/KelmNicInfoImpl.h"

namespace KelmCtl::Network {

using HostCtl::Lib::HostCtlException;
using HostCtl::Network::IpConfig;
using HostCtl::Network::KelmNicTagType;
using HostSim::PassOperation;
using HostSim::Store;

namespace {

class PortImpl : public HostCtl::Network::KelmNicPort {
public:
    PortImpl(std::string interface, std::uint32_t id) : interface_(std::move(interface)), id_(id) {}
    std::uint32_t GetId() const override {
        PassOperation("KelmNicPort::GetId", interface_);
        return id_;
    }

private:
    std::string interface_;
    std::uint32_t id_;
};

std::string NoSuchInterface(const std::string& name) {
    return "There is no Kelm interface named " + name;
}

// Runs `change` on the interface's current row in a write transaction, writes the row back
// and keeps it as the copy held.
template <class Change>
void ChangeKelmNic(KelmNicRecord& held, Change change) {
    HostSim::Database& database = Store();
    HostSim::WriteTransaction transaction(database);
    auto current = HostSim::Ip::LoadKelmNic(database, held.name);
    if (!current) {
        throw HostCtlException(NoSuchInterface(held.name));
    }
    change(database, *current);
    HostSim::Ip::UpdateKelmNic(database, *current);
    transaction.Commit();
    held = std::move(*current);
}

std::string TagName(KelmNicTagType tag) {
    const char* name = KelmNicTagIdToName(tag);
    return *name != '\0' ? name : std::to_string(tag);
}

}  // namespace

KelmNicImpl::KelmNicImpl(KelmNicRecord record) : record_(std::move(record)) {}

void KelmNicImpl::Refresh() {
    PassOperation("KelmNicImpl::Refresh", record_.name);
    auto current = HostSim::Ip::LoadKelmNic(Store(), record_.name);
    if (!current) {
        throw HostCtlException(NoSuchInterface(record_.name));
    }
    record_ = std::move(*current);
}

std::string KelmNicImpl::GetInterfaceName() const {
    PassOperation("KelmNic::GetInterfaceName", record_.name);
    return record_.name;
}

std::string KelmNicImpl::GetNetstackInstanceKey() const {
    PassOperation("KelmNic::GetNetstackInstanceKey", record_.name);
    return record_.netstack;
}

HostCtl::Network::MacAddress KelmNicImpl::GetMacAddress() const {
    PassOperation("KelmNic::GetMacAddress", record_.name);
    return HostCtl::Network::MacAddress(record_.mac);
}

std::uint32_t KelmNicImpl::GetMtu() const {
    PassOperation("KelmNic::GetMtu", record_.name);
    return record_.mtu;
}

std::uint32_t KelmNicImpl::GetTsoMss() const {
    PassOperation("KelmNic::GetTsoMss", record_.name);
    return record_.tsoMss;
}

std::uint32_t KelmNicImpl::GetNumRxQueue() const {
    PassOperation("KelmNic::GetNumRxQueue", record_.name);
    return record_.rxQueues;
}

bool KelmNicImpl::IsEnabled() const {
    PassOperation("KelmNic::IsEnabled", record_.name);
    return record_.enabled;
}

void KelmNicImpl::Enable() {
    PassOperation("KelmNic::Enable", record_.name);
    ChangeKelmNic(record_,
                  [](HostSim::Database&, KelmNicRecord& record) { record.enabled = true; });
}

void KelmNicImpl::Disable() {
    PassOperation("KelmNic::Disable", record_.name);
    ChangeKelmNic(record_,
                  [](HostSim::Database&, KelmNicRecord& record) { record.enabled = false; });
}

void KelmNicImpl::SetMtu(unsigned mtu) {
    PassOperation("KelmNic::SetMtu", record_.name);
    HostSim::Ip::CheckMtu(static_cast<long>(mtu));
    ChangeKelmNic(record_, [mtu](HostSim::Database&, KelmNicRecord& record) { record.mtu = mtu; });
}

std::unique_ptr<HostCtl::Network::ConnectionPoint> KelmNicImpl::GetConnectionPoint() const {
    PassOperation("KelmNic::GetConnectionPoint", record_.name);
    if (record_.connectionType == HostCtl::Network::ConnectionPoint::kNone) {
        return nullptr;
    }
    return std::make_unique<KelmNicConnectionPoint>(record_);
}

std::unique_ptr<HostCtl::Network::KelmNicPort> KelmNicImpl::GetPort() const {
    PassOperation("KelmNic::GetPort", record_.name);
    if (record_.portId == 0) {
        return nullptr;
    }
    return std::make_unique<PortImpl>(record_.name, record_.portId);
}

IpConfig KelmNicImpl::GetIpConfig() const {
    PassOperation("KelmNic::GetIpConfig", record_.name);
    return HostSim::Ip::IpConfigFromJson(HostSim::Json::parse(record_.ipConfig));
}

IpConfig KelmNicImpl::GetConfiguredIpConfig() const {
    PassOperation("KelmNic::GetConfiguredIpConfig", record_.name);
    return HostSim::Ip::IpConfigFromJson(HostSim::Json::parse(record_.configuredIpConfig));
}

void KelmNicImpl::SetIpConfig(IpConfig config) {
    PassOperation("KelmNic::SetIpConfig", record_.name);
    HostSim::Ip::CheckIpConfig(config, record_.name);
    ChangeKelmNic(record_, [&config](HostSim::Database& database, KelmNicRecord& record) {
        if (const auto address = HostSim::Ip::StaticIpv4Address(config)) {
            for (const KelmNicRecord& other :
                 HostSim::Ip::LoadKelmNics(database, {.netstack = record.netstack})) {
                if (other.name != record.name &&
                    HostSim::Ip::IpConfigFromJson(HostSim::Json::parse(other.ipConfig))
                            .GetIpv4Address() == *address) {
                    HostSim::Ip::RefuseIpv4AddressInUse(*address, other.name, record.netstack);
                }
            }
        }
        record.configuredIpConfig = HostSim::Ip::IpConfigToJson(config).dump();
        record.ipConfig =
            HostSim::Ip::IpConfigToJson(HostSim::Ip::InForce(config, record.portId)).dump();
    });
}

void KelmNicImpl::Remove() {
    PassOperation("KelmNic::Remove", record_.name);
    HostSim::Database& database = Store();
    HostSim::WriteTransaction transaction(database);
    auto current = HostSim::Ip::LoadKelmNic(database, record_.name);
    if (!current) {
        throw HostCtlException(NoSuchInterface(record_.name));
    }
    HostSim::Ip::RemoveKelmNicRow(database, *current);
    transaction.Commit();
}

void KelmNicImpl::AddTag(KelmNicTagType tag, bool exclusive) {
    PassOperation("KelmNic::AddTag", record_.name);
    if (*KelmNicTagIdToName(tag) == '\0') {
        throw HostCtlException("Tag " + std::to_string(tag) + " is not a tag of this host");
    }
    ChangeKelmNic(record_, [&](HostSim::Database& database, KelmNicRecord& record) {
        if (exclusive) {
            for (KelmNicRecord& other : HostSim::Ip::LoadKelmNics(database, {})) {
                if (other.name != record.name && std::erase(other.tags, tag) != 0) {
                    HostSim::Ip::UpdateKelmNic(database, other);
                }
            }
        }
        if (std::find(record.tags.begin(), record.tags.end(), tag) == record.tags.end()) {
            record.tags.push_back(tag);
            std::sort(record.tags.begin(), record.tags.end());
        }
    });
}

void KelmNicImpl::RemoveTag(KelmNicTagType tag) {
    PassOperation("KelmNic::RemoveTag", record_.name);
    ChangeKelmNic(record_, [&](HostSim::Database&, KelmNicRecord& record) {
        if (std::erase(record.tags, tag) == 0) {
            throw HostCtlException("Interface " + record.name + " does not bear the tag " +
                                   TagName(tag));
        }
    });
}

void KelmNicImpl::GetTags(std::vector<KelmNicTagType>& tags) const {
    PassOperation("KelmNic::GetTags", record_.name);
    tags.insert(tags.end(), record_.tags.begin(), record_.tags.end());
}

bool KelmNicImpl::IsNetDumperInterface() const {
    PassOperation("KelmNic::IsNetDumperInterface", record_.name);
    return record_.netDumper;
}

bool KelmNicImpl::IsIpv6ReadyPrimary() const {
    PassOperation("KelmNic::IsIpv6ReadyPrimary", record_.name);
    return record_.ipv6ReadyPrimary;
}

bool KelmNicImpl::IsIpv6ReadySecondary() const {
    PassOperation("KelmNic::IsIpv6ReadySecondary", record_.name);
    return record_.ipv6ReadySecondary;
}

KelmNicConnectionPoint::KelmNicConnectionPoint(const KelmNicRecord& record)
    : interface_(record.name),
      type_(record.connectionType),
      portset_(record.portset),
      portGroup_(record.portGroup),
      dvsId_(record.dvsId),
      dvPort_(record.dvPort),
      connectionId_(record.connectionId),
      opaque_(record.opaque) {}

std::string KelmNicConnectionPoint::GetPortsetName() const {
    PassOperation("ConnectionPoint::GetPortsetName", interface_);
    return portset_;
}

bool KelmNicConnectionPoint::IsValid() const {
    PassOperation("ConnectionPoint::IsValid", interface_);
    return true;
}

HostCtl::Network::DVPortParam KelmNicConnectionPoint::GetDVPortParam() const {
    PassOperation("ConnectionPoint::GetDVPortParam", interface_);
    if (type_ != kDVPort) {
        return ConnectionPoint::GetDVPortParam();
    }
    return {dvsId_, dvPort_, connectionId_};
}

int KelmNicConnectionPoint::GetType() const {
    PassOperation("ConnectionPoint::GetType", interface_);
    return type_;
}

std::string KelmNicConnectionPoint::GetPortGroupName() const {
    PassOperation("ConnectionPoint::GetPortGroupName", interface_);
    return portGroup_;
}

const HostCtl::Network::OpaqueNetworkParam& KelmNicConnectionPoint::GetOpaqueNetworkParam() const {
    PassOperation("ConnectionPoint::GetOpaqueNetworkParam", interface_);
    if (type_ != kOpaqueNetwork) {
        return ConnectionPoint::GetOpaqueNetworkParam();
    }
    return opaque_;
}

}  // namespace KelmCtl::Network

namespace HostSim::Ip {

void RemoveKelmNicRow(Database& database, const KelmCtl::Network::KelmNicRecord& record) {
    DeleteKelmNic(database, record.name);
    Routing::ForgetInterface(database, record.netstack, record.name);
    if (record.connectionType == HostCtl::Network::ConnectionPoint::kPortGroup) {
        DropPortGroupUser(database, record.portGroup, record.name);
    } else if (record.connectionType == HostCtl::Network::ConnectionPoint::kDVPort) {
        DropDVPortClient(database, record.dvsId, record.dvPort, record.name);
    }
}

}  // namespace HostSim::Ip
