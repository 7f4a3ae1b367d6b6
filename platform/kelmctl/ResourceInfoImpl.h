// The host's resource model, as far as the network commands need it: the names of worlds.
#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace KelmCtl::Resource {

class ResourceInfoImpl {
public:
    ResourceInfoImpl();
    ~ResourceInfoImpl();

    // The name of the world with that id; empty for a world the host doesn't know.
    std::string GetWorldName(std::uint64_t worldId);

private:
    // The names of the worlds, read once on first use.
    std::map<std::uint64_t, std::string> names_;
    bool loaded_ = false;
};

}  // namespace KelmCtl::Resource
