#include "nic/NicQueueCommon.h"

namespace ZanvexCli::NetworkNamespace {

std::string PnicNotFound(const std::string& name) {
    return "Pnic with name " + name + " not found";
}

std::string InvalidPnicName(const std::string& name) {
    return "Invalid PNIC name " + name;
}

std::unique_ptr<NetqueueWorkingSet> NetqueueNics(HostCtl::Network::NetworkInfo& networkInfo,
                                                 const CppTools::CallSpec::Input& input,
                                                 CppTools::CallSpec::Output& output,
                                                 std::string (*unknownWords)(const std::string&)) {
    auto set = std::make_unique<NetqueueWorkingSet>();
    if (input.HasParameter(kHwnicParameter)) {
        const std::string& name = input.GetParameter(kHwnicParameter);
        auto pnic = networkInfo.GetPnicByName(name, false);
        if (!pnic) {
            output.AddErrorMessage(unknownWords(name));
            return nullptr;
        }
        set->named = true;
        set->pnics.push_back(std::move(pnic));
    } else {
        set->pnics = networkInfo.GetPnics(HostCtl::Network::PnicGetAll);
    }
    return set;
}

}  // namespace ZanvexCli::NetworkNamespace
