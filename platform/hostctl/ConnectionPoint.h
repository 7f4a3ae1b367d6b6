// Something ports attach to on a portset: a port group, or the port of a kernel interface.
#pragma once

#include <string>

#include "hostctl/HostCtlObject.h"

namespace HostCtl::Network {

// hostctl/DVSwitch.h
struct DVPortParam;

// What an opaque network names its attachment by.
struct OpaqueNetworkParam {
    std::string opaqueNetworkId;
    std::string opaqueNetworkType;
    std::string externalId;
};

class ConnectionPoint : public virtual Lib::HostCtlObject {
public:
    // The name of the portset (switch) the connection point belongs to.
    virtual std::string GetPortsetName() const = 0;

    // Ports of distributed switches.
    // False for a connection point that can't be used: one the host doesn't have.
    virtual bool IsValid() const = 0;

    // Kinds of connection point for Kelm interfaces.
    enum Kind { kNone = 0, kPortGroup = 1, kDVPort = 2, kOpaqueNetwork = 3 };
    // The kind, kNone unless a kind of connection point says otherwise.
    virtual int GetType() const;
    // The port group's name for a port group, else empty.
    virtual std::string GetPortGroupName() const;
    // The port's record for a DVPort, else an empty one.
    virtual DVPortParam GetDVPortParam() const;
    // The opaque network's record; one shared record of empty strings unless a kind says
    // otherwise.
    virtual const OpaqueNetworkParam& GetOpaqueNetworkParam() const;
};

}  // namespace HostCtl::Network
