// The host's rule for the names it stores (switches, port groups, interfaces, netstacks, ...):
// a name a table can show on one line.
#pragma once

#include <string>

namespace HostSim {

inline constexpr std::size_t kMaximumNameLength = 127;

// Throws HostCtlException, in the host's words with `what` naming the kind of object ("port
// group"), for a name that is empty, longer than 127 bytes, holds a control character or is
// only blanks.
void CheckObjectName(const std::string& name, const char* what);

// What CheckObjectName refuses in a name that is given, as the end of a sentence about it
// ("holds control characters"); empty for a name the host can store. An empty name is left to
// each subject: some may be empty (a DVPort's).
std::string NameProblem(const std::string& name);

}  // namespace HostSim
