#include "hostsim/nic/ListedDpus.h"

#include <unordered_map>

namespace HostSim::Nic {

namespace {

struct Listing {
    const void* owner = nullptr;
    std::unordered_map<std::string, std::string> dpuIds;
};

// Per thread: a listing and the look-ups of its rows run on the thread of the command.
Listing& CurrentListing() {
    thread_local Listing listing;
    return listing;
}

}  // namespace

void RememberListedDpus(const void* owner, const std::vector<std::unique_ptr<Record>>& records) {
    Listing& listing = CurrentListing();
    listing.owner = owner;
    listing.dpuIds.clear();
    listing.dpuIds.reserve(records.size());
    for (const auto& record : records) {
        listing.dpuIds.emplace(record->name, record->dpuId);
    }
}

void ForgetListedDpus(const void* owner) {
    Listing& listing = CurrentListing();
    if (listing.owner == owner) {
        listing.owner = nullptr;
        listing.dpuIds.clear();
    }
}

std::optional<std::string> ListedDpuId(const std::string& nicName) {
    const Listing& listing = CurrentListing();
    if (listing.owner == nullptr) {
        return std::nullopt;
    }
    auto found = listing.dpuIds.find(nicName);
    if (found == listing.dpuIds.end()) {
        return std::nullopt;
    }
    return found->second;
}

}  // namespace HostSim::Nic
