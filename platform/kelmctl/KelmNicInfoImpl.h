// The host's Kelm interfaces: look-ups, creation and removal, and the names of the tags.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "hostctl/ConnectionPoint.h"
#include "hostctl/IpConfig.h"
#include "hostctl/KelmNic.h"
#include "hostctl/MacAddress.h"

namespace KelmCtl::Network {

// The tag of a name, 14 for a name that is no tag; the name of a tag 1 to 13, a constant text
// (empty for any other number).
HostCtl::Network::KelmNicTagType KelmNicTagNameToId(const std::string& name);
const char* KelmNicTagIdToName(HostCtl::Network::KelmNicTagType tag);

class KelmNicInfoImpl : public HostCtl::Network::KelmNicInfo {
public:
    KelmNicInfoImpl();
    ~KelmNicInfoImpl() override;

    std::vector<std::unique_ptr<HostCtl::Network::KelmNic>> GetKelmNics(
        HostCtl::Network::PortsetGetType type) override;
    // Those of one netstack instance; none for an unknown key.
    std::vector<std::unique_ptr<HostCtl::Network::KelmNic>> GetKelmNicsByInstanceKey(
        const std::string& key, HostCtl::Network::PortsetGetType type);
    // Null when there is no interface of that name and type. The record is always read from
    // the host, so `refresh` asks for nothing more.
    std::unique_ptr<HostCtl::Network::KelmNic> GetKelmNicByInterface(
        const std::string& name, bool refresh, HostCtl::Network::PortsetGetType type);
    // Every interface, ordinary or system, bearing the tag.
    std::vector<std::unique_ptr<HostCtl::Network::KelmNic>> GetKelmNicsByTag(
        HostCtl::Network::KelmNicTagType tag);
    // Appends the names of an instance's interfaces.
    void GetKelmNicNamesByInstanceKey(std::vector<std::string>& names, const std::string& key,
                                      HostCtl::Network::PortsetGetType type);

    // Creates an ordinary interface on a port group or DVPort in a netstack instance. A MAC
    // address of all zeros, an MTU or queue count of 0 and an empty name let the host choose.
    // `flags` and `system` are reserved and must be 0 and false. Throws HostCtlException for
    // what the host refuses: an unknown instance or connection point, one that has an
    // interface already, a name or MAC address in use, an MTU out of range.
    std::unique_ptr<HostCtl::Network::KelmNic> AddKelmNic(
        const HostCtl::Network::ConnectionPoint& connectionPoint, const std::string& netstackKey,
        const HostCtl::Network::IpConfig& ipConfig, const HostCtl::Network::MacAddress& mac,
        unsigned flags, unsigned mtu, unsigned numRxQueue, const std::string& name, bool system);
    // Removes the interface of that instance at that connection point; throws when there is
    // none.
    void RemoveKelmNic(const HostCtl::Network::ConnectionPoint& connectionPoint,
                       const std::string& netstackKey);
};

}  // namespace KelmCtl::Network
