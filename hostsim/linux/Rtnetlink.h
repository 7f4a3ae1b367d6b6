// What the rtnetlink subjects (interfaces, routes, neighbours, netstacks) share: route sockets
// in a netstack's namespace, addresses as text, and the names of links by index.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "hostsim/linux/Netlink.h"

namespace HostSim::Linux {

// Route sockets by netstack. The default netstack's is kept for the process; a named one's is
// opened anew for each use, so that a namespace made again under an old name is the one used.
class RouteSockets {
public:
    // A socket in the namespace of `netstack`, valid until the next call. Throws
    // HostCtlException for a key with no namespace.
    NetlinkSocket& Open(const std::string& netstack);
    // Closes a named netstack's socket, which would keep its namespace alive.
    void CloseNamed() { named_.reset(); }

private:
    std::unique_ptr<NetlinkSocket> default_;
    std::unique_ptr<NetlinkSocket> named_;
};

// AF_INET for 4, AF_INET6 for 6.
int AddressFamily(int family);
// The text of an address attribute of the family; empty for a null one.
std::string AddressText(int addressFamily, const nlattr* attribute);
// An IPv4 address attribute in host byte order; 0 for none or a short one, whose text is empty.
std::uint32_t Ipv4Value(const nlattr* attribute);
// Puts an address attribute from its text; throws HostCtlException for text that is no
// address of the family.
void PutAddress(Message& message, std::uint16_t type, int addressFamily, const std::string& text);
// "02:00:00:00:00:01" for the bytes of a hardware address attribute; empty for a null one.
std::string HardwareAddressText(const nlattr* attribute);
// The 32-bit value of an attribute, or `fallback` when it is absent.
std::uint32_t U32Or(const nlattr* attribute, std::uint32_t fallback);

// The names of a namespace's links, asked of the kernel once per index.
class LinkNames {
public:
    explicit LinkNames(NetlinkSocket& socket) : socket_(socket) {}
    // Empty for index 0 or a link that is gone.
    const std::string& Name(int index);
    // The index of the link of that name; 0 when there is none.
    int Index(const std::string& name);

private:
    NetlinkSocket& socket_;
    std::map<int, std::string> names_;
};

// A unicast route of a namespace's main table, as a dump of the table has it.
struct DumpedRoute {
    // Where the route leads through: a gateway (empty for a network reached directly) and the
    // index of the link.
    struct Hop {
        std::string gateway;
        int interfaceIndex = 0;
        std::uint32_t ipv4Gateway = 0;  // of an IPv4 route, in host byte order; 0 for none
    };
    int addressFamily = 0;
    std::string network;
    std::uint32_t ipv4Network = 0;  // of an IPv4 route, in host byte order
    unsigned prefixLength = 0;
    unsigned protocol = 0;  // the kernel's RTPROT_ number of who made it
    std::vector<Hop> hops;  // one, or each of a multipath route's
};
// Dumps the routes of a family (AF_UNSPEC: both) and hands each unicast route of the main table
// to `visit`, in the kernel's order.
void DumpMainRoutes(NetlinkSocket& socket, int addressFamily,
                    const std::function<void(const DumpedRoute&)>& visit);
// A request that adds (RTM_NEWROUTE) or removes (RTM_DELROUTE) a unicast route of the main
// table: the network and prefix length, the gateway (empty for none), the link (0 for any).
Message RouteChange(std::uint16_t type, std::uint16_t flags, int addressFamily,
                    const std::string& network, unsigned prefixLength, const std::string& gateway,
                    int interfaceIndex);

}  // namespace HostSim::Linux
