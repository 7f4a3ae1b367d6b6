// JSON as the host's profiles use it: objects keep their members in the order written.
#pragma once

#include <nlohmann/json.hpp>

namespace HostSim {

using Json = nlohmann::ordered_json;

}  // namespace HostSim
