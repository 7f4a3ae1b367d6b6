// Texts and steps that the netqueue commands share.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "cpptools/CallSpec.h"
#include "hostctl/NetworkInfo.h"

namespace ZanvexCli::NetworkNamespace {

inline constexpr char kHwnicParameter[] = "hwnic";
inline constexpr char kNicField[] = "NIC";
// The words for an unknown NIC: "Pnic with name <name> not found".
std::string PnicNotFound(const std::string& name);
// The words of the balancer state and plug-in commands: "Invalid PNIC name <name>".
std::string InvalidPnicName(const std::string& name);

// The NICs a netqueue listing walks: the one `hwnic` names, or all. Null after adding
// `unknownWords` of the name to `output` when the named NIC doesn't exist.
struct NetqueueWorkingSet {
    bool named = false;
    std::vector<std::unique_ptr<HostCtl::Network::Pnic>> pnics;
};
std::unique_ptr<NetqueueWorkingSet> NetqueueNics(HostCtl::Network::NetworkInfo& networkInfo,
                                                 const CppTools::CallSpec::Input& input,
                                                 CppTools::CallSpec::Output& output,
                                                 std::string (*unknownWords)(const std::string&));

}  // namespace ZanvexCli::NetworkNamespace
