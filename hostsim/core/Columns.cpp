#include "hostsim/core/Columns.h"

namespace HostSim {

std::string ColumnParameters(int first, std::size_t count) {
    std::string parameters;
    for (std::size_t index = 0; index < count; ++index) {
        parameters.append(index == 0 ? "?" : ", ?").append(std::to_string(first++));
    }
    return parameters;
}

}  // namespace HostSim
