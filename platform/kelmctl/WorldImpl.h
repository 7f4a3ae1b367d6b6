// Worlds, the host's schedulable units, named by number.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace KelmCtl::Resource {

class WorldImpl {
public:
    // Throws HostCtlException when the host has no such world.
    explicit WorldImpl(std::uint32_t worldId);

    std::uint32_t GetWorldId() const;
    // The host's name of the world: a five-character kind prefix, then the name proper
    // ("zvx0:vm-web01").
    std::string GetWorldName() const;

private:
    std::uint32_t worldId_;
    std::string name_;
};

class ResourceInfoImpl {
public:
    // The ids of every world, in ascending order.
    std::vector<std::uint32_t> GetWorldIds();
};

}  // namespace KelmCtl::Resource
