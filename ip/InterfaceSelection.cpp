#include "ip/InterfaceSelection.h"

namespace ZanvexCli::NetworkNamespace {

namespace {

constexpr char kSystemType[] = "system";
constexpr char kInvalidType[] = "Invalid type value, should be 'system'.";
constexpr char kInvalidNetstack[] = "Invalid netstack value, should be 'defaultTcpipStack'.";
constexpr char kNoInterface[] = "Unable to find a Kelm interface with the name ";

}  // namespace

std::optional<HostCtl::Network::PortsetGetType> ReadInterfaceType(const Input& input,
                                                                  Output& output,
                                                                  const std::string& netstack,
                                                                  bool checkNetstack) {
    if (!input.HasParameter(kInterfaceTypeParameter)) {
        return HostCtl::Network::PortsetGetNormal;
    }
    if (input.GetParameter(kInterfaceTypeParameter) != kSystemType) {
        output.AddErrorMessage(kInvalidType);
        return std::nullopt;
    }
    if (checkNetstack && !netstack.empty() && netstack != kDefaultNetstack) {
        output.AddErrorMessage(kInvalidNetstack);
        return std::nullopt;
    }
    return HostCtl::Network::PortsetGetSystem;
}

std::optional<std::vector<std::unique_ptr<HostCtl::Network::KelmNic>>> ChooseInterfaces(
    KelmCtl::Network::KelmNicInfoImpl& nics, const std::string& name, const std::string& netstack,
    HostCtl::Network::PortsetGetType type, Output& output) {
    if (!name.empty()) {
        auto nic = nics.GetKelmNicByInterface(name, false, type);
        if (!nic) {
            output.AddErrorMessage(kNoInterface + name);
            return std::nullopt;
        }
        std::vector<std::unique_ptr<HostCtl::Network::KelmNic>> chosen;
        chosen.push_back(std::move(nic));
        return chosen;
    }
    if (netstack.empty()) {
        return nics.GetKelmNics(type);
    }
    return nics.GetKelmNicsByInstanceKey(netstack, type);
}

std::unique_ptr<HostCtl::Network::KelmNic> FindKelmInterface(
    KelmCtl::Network::KelmNicInfoImpl& nics, const std::string& name, Output& output) {
    auto nic = nics.GetKelmNicByInterface(name, false, HostCtl::Network::PortsetGetNormal);
    if (!nic) {
        output.AddErrorMessage(kNoInterface + name);
    }
    return nic;
}

std::unique_ptr<HostCtl::Network::KelmNic> WalkToInterface(KelmCtl::Network::KelmNicInfoImpl& nics,
                                                           const std::string& name) {
    for (auto& nic : nics.GetKelmNics(HostCtl::Network::PortsetGetNormal)) {
        if (nic && nic->GetInterfaceName() == name) {
            return std::move(nic);
        }
    }
    return nullptr;
}

}  // namespace ZanvexCli::NetworkNamespace
