// A netstack instance: a separate kernel TCP/IP stack of the host, known by its key. Its
// settings exist in the configuration and, while it is up, in the kernel.
#pragma once

#include <string>

namespace HostCtl::Network {

class NetstackInstance {
public:
    // GetState of an instance that exists in the kernel.
    static constexpr int kStateUp = 0x1234;

    virtual ~NetstackInstance() = default;

    virtual std::string GetKey() const = 0;
    virtual std::string GetInstanceName() const = 0;
    virtual int GetState() const = 0;
    virtual unsigned GetMaxConnections() const = 0;
    virtual unsigned GetCurrentMaxConnections() const = 0;
    virtual std::string GetCongestionControlAlgorithm() const = 0;
    virtual bool GetIpv6Enabled() const = 0;
    virtual bool GetCurrentIpv6Enabled() const = 0;
    virtual std::string GetEcnStatus() const = 0;

    // `persist`: the change is stored in the configuration as well as applied.
    virtual void SetInstanceName(const std::string& name, bool persist) = 0;
    // Creates the instance in the kernel from its configuration; destroys it there.
    virtual void Enable() = 0;
    virtual void Disable() = 0;
    // Applied to the kernel only when the instance is created there.
    virtual void SetMaxConnections(const unsigned& maxConnections, bool persist) = 0;
    virtual void SetCongestionControlAlgorithm(const std::string& name, bool persist) = 0;
    // "disabled", "enabled" or "echo-only".
    virtual void SetEcnStatus(const std::string& status) = 0;
};

}  // namespace HostCtl::Network
