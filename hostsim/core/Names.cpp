#include "hostsim/core/Names.h"

#include <algorithm>

#include "hostctl/HostCtlException.h"

namespace HostSim {

using HostCtl::Lib::HostCtlException;

namespace {

bool HoldsControlCharacters(const std::string& name) {
    auto isControl = [](unsigned char c) { return c < 0x20 || c == 0x7f; };
    return std::any_of(name.begin(), name.end(), isControl);
}

bool IsOnlyBlanks(const std::string& name) {
    return name.find_first_not_of(' ') == std::string::npos;
}

}  // namespace

void CheckObjectName(const std::string& name, const char* what) {
    if (name.empty()) {
        throw HostCtlException(std::string("A ") + what + " name must not be empty");
    }
    if (name.size() > kMaximumNameLength) {
        throw HostCtlException(std::string("The ") + what + " name " + name + " is longer than " +
                               std::to_string(kMaximumNameLength) + " bytes");
    }
    // The name is not repeated here: a control character in it would break the message too.
    if (HoldsControlCharacters(name)) {
        throw HostCtlException(std::string("A ") + what + " name must not hold control characters");
    }
    if (IsOnlyBlanks(name)) {
        throw HostCtlException(std::string("A ") + what + " name must not be only blanks");
    }
}

std::string NameProblem(const std::string& name) {
    if (name.size() > kMaximumNameLength) {
        return "is longer than " + std::to_string(kMaximumNameLength) + " bytes";
    }
    if (HoldsControlCharacters(name)) {
        return "holds control characters";
    }
    if (IsOnlyBlanks(name)) {
        return "is only blanks";
    }
    return {};
}

}  // namespace HostSim
