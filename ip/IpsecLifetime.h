// How the `network ip ipsec` lists show a lifetime.
#pragma once

#include <cstdint>
#include <string>

namespace ZanvexCli::NetworkNamespace {

// A lifetime in seconds as the lists show it: "infinite" for 0, else its non-zero parts in
// hours, minutes and seconds, each followed by a blank ("1h 1m 1s ").
std::string ConvertToHrsMinsAndSecs(std::uint64_t seconds);

}  // namespace ZanvexCli::NetworkNamespace
