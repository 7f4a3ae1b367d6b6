// The names of every host operation ("Pnic::SetLinkState"), so that a fault can be checked
// against them. The table is made at build time by OperationNames.cmake from the
// "Interface::Operation" literals of hostsim/: an operation added there is known with no list
// to edit.
#pragma once

#include <span>
#include <string_view>

namespace HostSim {

// Sorted, each name once.
std::span<const std::string_view> OperationNames();

}  // namespace HostSim
