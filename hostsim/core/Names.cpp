#include "hostsim/core/Names.h"

#include <algorithm>

#include "hostctl/HostCtlException.h"

namespace HostSim {

using HostCtl::Lib::HostCtlException;

void CheckObjectName(const std::string& name, const char* what) {
    if (name.empty()) {
        throw HostCtlException(std::string("A ") + what + " name must not be empty");
    }
    if (name.size() > kMaximumNameLength) {
        throw HostCtlException(std::string("The ") + what + " name " + name + " is longer than " +
                               std::to_string(kMaximumNameLength) + " bytes");
    }
    // The name is not repeated here: a control character in it would break the message too.
    auto isControl = [](unsigned char c) { return c < 0x20 || c == 0x7f; };
    if (std::any_of(name.begin(), name.end(), isControl)) {
        throw HostCtlException(std::string("A ") + what + " name must not hold control characters");
    }
    if (name.find_first_not_of(' ') == std::string::npos) {
        throw HostCtlException(std::string("A ") + what + " name must not be only blanks");
    }
}

}  // namespace HostSim
