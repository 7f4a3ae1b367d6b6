// The network settings of /proc/sys/net, as the namespace of the calling thread has them: run
// inside a NetstackScope for a named netstack.
#pragma once

#include <optional>
#include <string>

namespace HostSim::Linux {

// The value of a setting, "ipv4/tcp_ecn", without its line end; empty when the kernel has no
// such setting (IPv6 switched off at boot has no ipv6/ folder).
std::optional<std::string> ReadNetSetting(const std::string& path);
// Writes a setting; a refusal throws HostCtlException with the kernel's words.
void WriteNetSetting(const std::string& path, const std::string& value);

}  // namespace HostSim::Linux
