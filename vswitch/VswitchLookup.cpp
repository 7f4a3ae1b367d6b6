#include "vswitch/VswitchLookup.h"

#include "hostctl/NetworkInfo.h"
#include "kelmctl/PortsetImpl.h"
#include "kelmctl/VirtualSwitchInfoImpl.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

constexpr char kNoLegacySwitch[] = "Unable to find a legacy virtual switch with the name ";
constexpr char kNoPortGroup[] = "Unable to find a port group with the name ";
constexpr char kSystemType[] = "system";
constexpr char kInvalidType[] = "Invalid type value, should be 'system'.";

}  // namespace

std::unique_ptr<HostCtl::Network::VirtualSwitch> FindLegacySwitch(
    KelmCtl::Network::VirtualSwitchInfoImpl& switches, const std::string& name, Output& output) {
    std::unique_ptr<HostCtl::Network::VirtualSwitch> found;
    if (KelmCtl::Network::PortsetImpl::IsValidVirtualSwitch(name)) {
        found = switches.GetVirtualSwitchByName(name, HostCtl::Network::PortsetGetNormal);
    }
    if (!found) {
        output.AddErrorMessage(kNoLegacySwitch + name);
    }
    return found;
}

std::unique_ptr<HostCtl::Network::PortGroup> FindPortGroup(const std::string& name,
                                                           Output& output) {
    auto found = HostCtl::Network::NetworkFactory::GetPortGroupByName(name);
    if (!found) {
        output.AddErrorMessage(kNoPortGroup + name);
    }
    return found;
}

std::optional<HostCtl::Network::PortsetGetType> ReadPortsetType(const Input& input,
                                                                Output& output) {
    if (!input.HasParameter(kTypeParameter)) {
        return HostCtl::Network::PortsetGetNormal;
    }
    if (input.GetParameter(kTypeParameter) != kSystemType) {
        output.AddErrorMessage(kInvalidType);
        return std::nullopt;
    }
    return HostCtl::Network::PortsetGetSystem;
}

}  // namespace ZanvexCli::NetworkNamespace
