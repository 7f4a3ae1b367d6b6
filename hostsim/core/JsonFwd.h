// The host's JSON type, named without its definition for headers that only declare what takes or
// gives one; hostsim/core/Json.h defines it.
#pragma once

#include <cstdint>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

namespace HostSim {

template <typename ValueType, typename = void>
struct ExactNumberSerializer;

using Json =
    nlohmann::basic_json<nlohmann::ordered_map, std::vector, std::string, bool, std::int64_t,
                         std::uint64_t, double, std::allocator, ExactNumberSerializer>;

}  // namespace HostSim
