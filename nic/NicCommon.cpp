#include "nic/NicCommon.h"

#include "cpptools/CallSpec.h"
#include "hostctl/SmartNic.h"
#include "kelmctl/NetworkInfoImpl.h"

namespace ZanvexCli::NetworkNamespace {

const char* DuplexWord(int duplex) {
    return duplex == 1 ? "Full" : "Half";
}

std::string BackingDpuId(const std::string& nicName) {
    if (auto smartNic = HostCtl::SmartNic::SmartNicInfo::GetSmartNicByPnic(nicName)) {
        return smartNic->GetId();
    }
    return "N/A";
}

std::unique_ptr<HostCtl::Network::Pnic> FindPnic(KelmCtl::Network::NetworkInfoImpl& networkInfo,
                                                 const std::string& nicName,
                                                 CppTools::CallSpec::Output& output) {
    auto pnic = networkInfo.GetPnicByName(nicName, false);
    if (!pnic) {
        output.AddErrorMessage("There is no pnic with name " + nicName);
    }
    return pnic;
}

}  // namespace ZanvexCli::NetworkNamespace
