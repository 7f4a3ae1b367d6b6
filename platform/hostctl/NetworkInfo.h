// The root of the host's network model.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "hostctl/DVSwitch.h"
#include "hostctl/KelmNic.h"
#include "hostctl/NetstackInstance.h"
#include "hostctl/Pnic.h"
#include "hostctl/PortGroup.h"
#include "hostctl/VirtualSwitch.h"

namespace HostCtl::Network {

class NetworkInfo {
public:
    virtual ~NetworkInfo() = default;
    // The vector may hold null entries, which callers skip.
    virtual std::vector<std::unique_ptr<Pnic>> GetPnics(PnicGetType type) = 0;
    // Null when there is no such NIC.
    virtual std::unique_ptr<Pnic> GetPnicByName(const std::string& name, bool refresh) = 0;

    // ENS contexts (lcores). A refusal of the host is a false, not an exception.
    virtual std::uint32_t GetEnsMaxLcores() = 0;
    virtual bool SetEnsMaxLcores(std::uint32_t count) = 0;
    // In the order they are shown.
    virtual std::vector<std::uint64_t> GetEnsLcores() = 0;
    virtual bool CreateEnsLcore(std::uint64_t id) = 0;
    virtual bool DestroyEnsLcore(std::uint64_t id) = 0;
    // "null" when the context serves no switch; throws for an unknown context.
    virtual std::string GetEnsLcoreSwitch(std::uint64_t id) = 0;
    // The NUMA node, -1 for none; throws for an unknown context.
    virtual std::int32_t GetEnsLcoreAffinity(std::uint64_t id) = 0;
    // "null" takes the context off its switch.
    virtual bool SetEnsLcoreSwitch(const std::string& switchName, std::uint64_t id) = 0;
    virtual bool SetEnsLcoreAffinity(std::int32_t affinity, std::uint64_t id) = 0;

    // Kelm interfaces and netstack instances.
    virtual std::unique_ptr<KelmNicInfo> GetKelmNicInfo() = 0;
    // Every instance, configured or up, in the order they were made.
    virtual std::vector<std::unique_ptr<NetstackInstance>> ListNetstackInstances() = 0;
    // Null when there is no instance of that key.
    virtual std::unique_ptr<NetstackInstance> LookupNetstackInstanceByKey(
        const std::string& key) = 0;
    // Adds an instance with the settings of `instance`; `configOnly`: not created in the kernel.
    // Throws HostCtlException for a key that is taken or a setting the host refuses.
    virtual void AddNetstackInstance(const NetstackInstance& instance, bool configOnly) = 0;
    // `keepConfig`: only destroyed in the kernel. Throws for an unknown key, the default
    // instance, or an instance that interfaces still use.
    virtual void RemoveNetstackInstance(const std::string& key, bool keepConfig) = 0;
    // NetstackInstance::kStateUp when the instance exists in the kernel.
    virtual int GetNetstackState(const std::string& key) = 0;
    // The keys of the instances the system defines: the default one and the dedicated ones.
    virtual std::vector<std::string> GetPredefinedNetstackKeys() = 0;
    // Brings the network dumper's view of the interfaces up to date.
    virtual void RefreshNetDumper() = 0;
};

class NetworkFactory {
public:
    static std::unique_ptr<NetworkInfo> GetNetworkInfo();
    // Null when there is no switch of that name and type.
    static std::unique_ptr<VirtualSwitch> GetVirtualSwitchById(const std::string& name,
                                                               PortsetGetType type);
    // Null when there is no port group of that name.
    static std::unique_ptr<PortGroup> GetPortGroupByName(const std::string& name);

    // Distributed switches.
    // For a name the host doesn't know, a switch that is no DVSwitchImpl and whose every
    // operation throws HostCtlException saying so: never null.
    static std::unique_ptr<DVSwitch> GetDVSwitchByName(const std::string& name);
    // Null when the switch or the port doesn't exist.
    static std::unique_ptr<DVPort> GetDVPort(const DVPortParam& param);
};

}  // namespace HostCtl::Network
