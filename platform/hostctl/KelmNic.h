// Kelm network interfaces: the host's own IP endpoints, each on a connection point of a
// virtual switch and in one netstack instance.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "hostctl/ConnectionPoint.h"
#include "hostctl/HostCtlObject.h"
#include "hostctl/IpConfig.h"
#include "hostctl/MacAddress.h"
#include "hostctl/VirtualSwitch.h"

namespace HostCtl::Network {

// A service tag of an interface: 1 to 13; 14 stands for a name that is no tag.
using KelmNicTagType = int;

// The switch port an interface is connected through.
class KelmNicPort : public virtual Lib::HostCtlObject {
public:
    virtual std::uint32_t GetId() const = 0;
};

class KelmNic {
public:
    static constexpr long MIN_MTU = 1280;
    static constexpr long MAX_MTU = 9000;

    virtual ~KelmNic() = default;

    virtual std::string GetInterfaceName() const = 0;
    virtual std::string GetNetstackInstanceKey() const = 0;
    virtual MacAddress GetMacAddress() const = 0;
    virtual std::uint32_t GetMtu() const = 0;
    virtual std::uint32_t GetTsoMss() const = 0;
    virtual std::uint32_t GetNumRxQueue() const = 0;
    virtual bool IsEnabled() const = 0;
    virtual void Enable() = 0;
    virtual void Disable() = 0;
    // Throws HostCtlException for an MTU outside the host's range.
    virtual void SetMtu(unsigned mtu) = 0;
    // Null for an interface attached to nothing.
    virtual std::unique_ptr<ConnectionPoint> GetConnectionPoint() const = 0;
    // Null for an interface without a port.
    virtual std::unique_ptr<KelmNicPort> GetPort() const = 0;

    // The configuration in force and the stored one.
    virtual IpConfig GetIpConfig() const = 0;
    virtual IpConfig GetConfiguredIpConfig() const = 0;
    // Stores the configuration and puts it in force.
    virtual void SetIpConfig(IpConfig config) = 0;

    // Removes this interface from the host.
    virtual void Remove() = 0;

    // `exclusive`: the tag leaves every other interface of the host.
    virtual void AddTag(KelmNicTagType tag, bool exclusive) = 0;
    virtual void RemoveTag(KelmNicTagType tag) = 0;
    // Appends the tags, in the order to be shown.
    virtual void GetTags(std::vector<KelmNicTagType>& tags) const = 0;

    // The network dumper's use of the interface.
    virtual bool IsNetDumperInterface() const = 0;
    virtual bool IsIpv6ReadyPrimary() const = 0;
    virtual bool IsIpv6ReadySecondary() const = 0;

    // IP services: the multicast groups the interface is a member of.
    struct MulticastGroup {
        std::string interfaceName;
        std::string group;
        std::string linkLayerAddress;
        std::int32_t refCount = 0;
    };
    // Appends the memberships, in the order they were made.
    virtual void GetMulticastGroups(std::vector<MulticastGroup>& groups) const;
};

// The host's Kelm interfaces as a collection.
class KelmNicInfo {
public:
    virtual ~KelmNicInfo() = default;
    // Those of every netstack instance, in the host's order. The type picks the ordinary or
    // the system ones.
    virtual std::vector<std::unique_ptr<KelmNic>> GetKelmNics(PortsetGetType type) = 0;
};

}  // namespace HostCtl::Network
