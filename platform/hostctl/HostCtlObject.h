// Base of the host-control objects that stand for a live part of the host (ports, portsets,
// connection points).
#pragma once

namespace HostCtl::Lib {

class HostCtlObject {
  public:
    virtual ~HostCtlObject() = default;
};

}  // namespace HostCtl::Lib
