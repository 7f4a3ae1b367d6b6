// Parameters and the choice of interfaces that the interface commands share.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "frame/Declaration.h"
#include "hostctl/KelmNic.h"
#include "ip/NetstackParameter.h"
#include "kelmctl/KelmNicInfoImpl.h"

namespace ZanvexCli::NetworkNamespace {

inline constexpr char kInterfaceNameParameter[] = "interface-name";
inline constexpr char kInterfaceTypeParameter[] = "type";

// The portset type of a listing's `type` parameter: ordinary when absent; with it, "system",
// and then a `netstack` that is empty or the default one. Otherwise adds "Invalid type value,
// should be 'system'." or "Invalid netstack value, should be 'defaultTcpipStack'." and gives
// nothing. With `checkNetstack` false the netstack is not looked at.
std::optional<HostCtl::Network::PortsetGetType> ReadInterfaceType(const Input& input,
                                                                  Output& output,
                                                                  const std::string& netstack,
                                                                  bool checkNetstack = true);

// The interfaces a read command shows: the one named, else those of the netstack, else all;
// nothing after adding "Unable to find a Kelm interface with the name <name>".
std::optional<std::vector<std::unique_ptr<HostCtl::Network::KelmNic>>> ChooseInterfaces(
    KelmCtl::Network::KelmNicInfoImpl& nics, const std::string& name, const std::string& netstack,
    HostCtl::Network::PortsetGetType type, Output& output);

// The ordinary interface of that name, or null after adding "Unable to find a Kelm interface
// with the name <name>".
std::unique_ptr<HostCtl::Network::KelmNic> FindKelmInterface(
    KelmCtl::Network::KelmNicInfoImpl& nics, const std::string& name, Output& output);

// The first ordinary interface whose name is `name`, walking the whole list; null if none.
std::unique_ptr<HostCtl::Network::KelmNic> WalkToInterface(KelmCtl::Network::KelmNicInfoImpl& nics,
                                                           const std::string& name);

}  // namespace ZanvexCli::NetworkNamespace
