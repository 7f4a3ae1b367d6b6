// Look-ups of portsets by name.
#pragma once

#include <string>

namespace KelmCtl::Network {

class PortsetImpl {
  public:
    // Whether a virtual switch of that name, ordinary or system, exists on the host.
    static bool IsValidVirtualSwitch(const std::string& name);
};

}  // namespace KelmCtl::Network
