// One of the user's hosts file entries, as both hosts keep it.
#pragma once

#include <string>
#include <vector>

namespace HostSim::NameService {

struct HostsRecord {
    std::string address;  // in its normal form
    std::string hostName;
    std::vector<std::string> aliases;
    std::string comment;  // one line, empty for none

    bool operator==(const HostsRecord&) const = default;
};

}  // namespace HostSim::NameService
