// The names of every host operation ("Pnic::SetLinkState"), so that a fault can be checked
// against them. The table is made at build time by OperationNames.cmake from the
// "Interface::Operation" literals of hostsim/: an operation added there is known with no list
// to edit.
#pragma once

#include <cstddef>
#include <string_view>

namespace HostSim {

// The names, sorted, each once: name `index` of OperationCount().
std::size_t OperationCount();
std::string_view OperationName(std::size_t index);

}  // namespace HostSim
