// The name service of the live host: the resolver configuration files, the tool's entries of
// /etc/hosts, and the IPv6 switch of the namespace's sysctl settings.
#pragma once

#include "hostsim/linux/LiveHost.h"

namespace HostSim::Linux {

class NameService final : public Live::NameServiceDriver {
public:
    // The resolver configuration and the IPv6 switch (NameService.cpp).
    ResolverConfig ReadResolver(const std::string& netstack) override;
    ResolverConfig EditResolver(const std::string& netstack,
                                const std::function<void(ResolverConfig&)>& change) override;
    bool Ipv6Enabled() override;
    void SetIpv6Enabled(bool enabled) override;

    // The hosts file (HostsFile.cpp).
    std::vector<HostSim::NameService::HostsRecord> ReadHosts() override;
    void EditHosts(const std::function<void(std::vector<HostSim::NameService::HostsRecord>&)>&
                       change) override;
};

// The lines of a text file, and whether its last line ended with a newline.
struct TextLines {
    std::vector<std::string> lines;
    bool finalNewline = true;
};
TextLines SplitLines(const std::string& text);
std::string JoinLines(const TextLines& text);

// The address in the kernel's text form ("2001:db8::1"); text that is no address as it is.
std::string NormalAddress(const std::string& text);

}  // namespace HostSim::Linux
