// Something ports attach to on a portset: a port group, or the port of a kernel interface.
#pragma once

#include <string>

#include "hostctl/HostCtlObject.h"

namespace HostCtl::Network {

class ConnectionPoint : public virtual Lib::HostCtlObject {
  public:
    // The name of the portset (switch) the connection point belongs to.
    virtual std::string GetPortsetName() const = 0;

    // Ports of distributed switches.
    // False for a connection point that can't be used: one the host doesn't have.
    virtual bool IsValid() const = 0;
};

}  // namespace HostCtl::Network
