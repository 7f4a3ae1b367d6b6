#include "hostsim/core/Subject.h"

// The subjects of the host, one line each, in import order: a subject may refer to names of
// the subjects above it. SUBJECT(x) names the `const Subject xSubject` defined in the
// subject's folder, hostsim/x in lower case (SubjectLayoutTest.cpp holds the tree to this).
// clang-format off
#define HOSTSIM_SUBJECTS(SUBJECT) \
    SUBJECT(nic) \
    SUBJECT(nicsettings) \
    SUBJECT(nicdevices) \
    SUBJECT(vswitch) \
    SUBJECT(dvs) \
    SUBJECT(ens) \
    SUBJECT(ports) \
    SUBJECT(netstack) \
    SUBJECT(kelmnic) \
    SUBJECT(firewall) \
    SUBJECT(routing) \
    SUBJECT(nameService) \
    SUBJECT(ipsec)
// clang-format on

namespace HostSim {

#define HOSTSIM_DECLARE_SUBJECT(name) extern const Subject name##Subject;
HOSTSIM_SUBJECTS(HOSTSIM_DECLARE_SUBJECT)

std::span<const Subject* const> Subjects() {
#define HOSTSIM_LIST_SUBJECT(name) &name##Subject,
    static const Subject* const subjects[] = {HOSTSIM_SUBJECTS(HOSTSIM_LIST_SUBJECT)};
    return subjects;
}

}  // namespace HostSim
