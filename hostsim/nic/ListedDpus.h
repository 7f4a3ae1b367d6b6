// The DPU ids that a NIC listing read along with its NICs. Asking for the DPU behind each
// listed NIC then asks the store nothing more: one query for the listing instead of one per row.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "hostsim/nic/NicStore.h"

namespace HostSim::Nic {

// Keeps the DPU ids of `records` for the calling thread until `owner` forgets them or another
// listing replaces them.
void RememberListedDpus(const void* owner, const std::vector<std::unique_ptr<Record>>& records);
void ForgetListedDpus(const void* owner);
// The DPU id of a NIC of the remembered listing (empty when no DPU backs it); nothing when no
// listing is remembered or the NIC was not in it.
std::optional<std::string> ListedDpuId(const std::string& nicName);

}  // namespace HostSim::Nic
