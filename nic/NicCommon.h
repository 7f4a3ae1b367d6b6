// Texts and look-ups that several NIC commands share.
#pragma once

#include <memory>
#include <string>

#include "cpptools/CallSpec.h"
#include "hostctl/Pnic.h"

namespace KelmCtl::Network {
class NetworkInfoImpl;
}

namespace ZanvexCli::NetworkNamespace {

// The parameter that names the NIC, and its description.
inline constexpr char kNicNameParameter[] = "nic-name";
inline constexpr char kNicNameDescription[] =
    "The name of the NIC to configured. This must be one of the cards listed in the nic list "
    "command.";

// "Full" for duplex 1, "Half" for any other value.
const char* DuplexWord(int duplex);

// The id of the DPU behind the NIC, "N/A" when none backs it.
std::string BackingDpuId(const std::string& nicName);

// The NIC of that name, or null after adding "There is no pnic with name <name>" to `output`.
std::unique_ptr<HostCtl::Network::Pnic> FindPnic(KelmCtl::Network::NetworkInfoImpl& networkInfo,
                                                 const std::string& nicName,
                                                 CppTools::CallSpec::Output& output);

}  // namespace ZanvexCli::NetworkNamespace
