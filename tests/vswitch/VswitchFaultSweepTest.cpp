// Every host operation of every standard switch command, failed in turn: each run ends in the
// host's message and no root.
#include "VswitchSweepCases.h"

namespace {

class VswitchFaultSweep : public Testing::CommandTest {};

TEST_F(VswitchFaultSweep, SwitchLifecycle) {
    SweepTable(VswitchSweeps::kSwitchLifecycle);
}

TEST_F(VswitchFaultSweep, SwitchPolicies) {
    SweepTable(VswitchSweeps::kSwitchPolicies);
}

TEST_F(VswitchFaultSweep, PortGroups) {
    SweepTable(VswitchSweeps::kPortGroups);
}

}  // namespace
