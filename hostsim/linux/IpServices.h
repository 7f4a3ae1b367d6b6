// The live host's IP services: the sockets and multicast memberships of a namespace, the
// resolver configuration, the hosts file and the IPv6 switch, and the kernel's IPsec databases.
// Part of the interface between the host library and the live host module (LiveHost.h).
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "hostctl/KelmNic.h"
#include "hostctl/Routing.h"
#include "hostsim/nameservice/NameServiceRecord.h"
#include "kelmctl/DnsConfigImpl.h"

namespace HostSim::Live {

enum class SocketKind { Tcp, Udp, Raw };

// The sockets of a netstack's namespace, from the kernel's socket diagnostics.
class SocketDriver {
public:
    virtual ~SocketDriver() = default;
    // Appends the sockets of that kind, IPv4 ones first, each family in the kernel's order.
    virtual void List(const std::string& netstack, SocketKind kind,
                      std::vector<HostCtl::Network::TcpIpConnection>& sockets) = 0;
};

// The multicast groups joined on the links of a netstack's namespace.
class MulticastDriver {
public:
    virtual ~MulticastDriver() = default;
    // Appends the IPv4 groups, then the IPv6 ones, of the link `interface`.
    virtual void Groups(const std::string& netstack, const std::string& interface,
                        std::vector<HostCtl::Network::KelmNic::MulticastGroup>& groups) = 0;
};

// The resolver configuration of each netstack (/etc/resolv.conf for the default one,
// /etc/netns/NAME/resolv.conf for a named one), the user's entries of /etc/hosts, and the IPv6
// switch of the process's namespace.
class NameServiceDriver {
public:
    using ResolverConfig = KelmCtl::Network::DnsConfigImpl::Config;

    virtual ~NameServiceDriver() = default;
    virtual ResolverConfig ReadResolver(const std::string& netstack) = 0;
    // Reads the configuration as it stands, lets `change` change it, and writes what changed,
    // keeping every other line of the file. `change` throws to leave the file as it was.
    virtual ResolverConfig EditResolver(const std::string& netstack,
                                        const std::function<void(ResolverConfig&)>& change) = 0;

    // The entries this tool made, in the order of the file.
    virtual std::vector<NameService::HostsRecord> ReadHosts() = 0;
    // As EditResolver, for those entries; the file's other lines stay as they are.
    virtual void EditHosts(
        const std::function<void(std::vector<NameService::HostsRecord>&)>& change) = 0;

    virtual bool Ipv6Enabled() = 0;
    virtual void SetIpv6Enabled(bool enabled) = 0;
};

// An association or policy as the kernel holds it, its addresses as text in the canonical form;
// the numbers are the indices of IpSecConfigImpl's name tables. (The host-control records hold
// addresses whose code the module does not link.)
struct IpsecAssociation {
    std::string name;
    int state = 0;
    std::uint64_t lifetime = 0;
    std::uint32_t spi = 0;
    std::string source;
    std::string destination;
    int mode = 0;
    int encryptionAlgorithm = 0;
    std::string encryptionKey;  // as the user gave it; never read back
    int integrityAlgorithm = 0;
    std::string integrityKey;
};
struct IpsecPolicy {
    std::string name;
    std::string source;
    std::uint32_t sourcePrefixLength = 0;
    std::int32_t sourcePort = 0;
    std::string destination;
    std::uint32_t destinationPrefixLength = 0;
    std::int32_t destinationPort = 0;
    int upperLayerProtocol = 0;
    int direction = 0;
    int action = 0;
    int mode = 0;
    std::string saName;
};

// The XFRM states and policies of the process's namespace. The kernel keeps no names: the
// names given here are kept beside it, and a state that no name denotes is an automatic one.
// A name that is taken, or an association named that does not exist, throws HostCtlException.
class IpsecDriver {
public:
    virtual ~IpsecDriver() = default;
    virtual void AddAssociation(const IpsecAssociation& association) = 0;
    // False when no association has that name.
    virtual bool RemoveAssociation(const std::string& name) = 0;
    // The automatic association of the record's source, destination and SPI; false when there
    // is none.
    virtual bool RemoveAutoAssociation(const IpsecAssociation& association) = 0;
    virtual void FlushAssociations() = 0;
    virtual std::vector<IpsecAssociation> Associations() = 0;

    virtual void AddPolicy(const IpsecPolicy& policy) = 0;
    // False when no policy has that name.
    virtual bool RemovePolicy(const std::string& name) = 0;
    virtual void FlushPolicies() = 0;
    virtual std::vector<IpsecPolicy> Policies() = 0;
};

}  // namespace HostSim::Live
