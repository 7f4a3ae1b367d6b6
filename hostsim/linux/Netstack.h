// Netstacks on the live host are network namespaces: "defaultTcpipStack" is the one the process
// runs in, any other key the named namespace /run/netns/KEY (the convention ip netns keeps, so
// that each tool sees the other's). A socket belongs to the namespace it was opened in, so an
// operation on a netstack opens its sockets inside a NetstackScope.
#pragma once

#include <string>

namespace HostSim::Linux {

inline constexpr const char kDefaultNetstack[] = "defaultTcpipStack";
inline constexpr const char kNamedNamespaces[] = "/run/netns";

// While it lives, the calling thread is in the namespace of `key`; it returns to the one it
// came from when it goes. Throws HostCtlException for a key with no namespace.
class NetstackScope {
public:
    explicit NetstackScope(const std::string& key);
    ~NetstackScope();
    NetstackScope(const NetstackScope&) = delete;
    NetstackScope& operator=(const NetstackScope&) = delete;

private:
    int home_ = -1;  // the namespace to return to; -1 when the scope stays where it was
};

}  // namespace HostSim::Linux
