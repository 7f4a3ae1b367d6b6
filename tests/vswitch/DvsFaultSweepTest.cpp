// Every host operation of the distributed switch, LACP, ENS, port and VM commands, failed in
// turn: each run ends in the host's message (behind the command's prefix) and no root.
#include "VswitchSweepCases.h"

namespace {

class DvsFaultSweep : public Testing::CommandTest {};

TEST_F(DvsFaultSweep, DistributedSwitchesAndLacp) {
    SweepTable(VswitchSweeps::kDistributedSwitchesAndLacp);
}

TEST_F(DvsFaultSweep, EnsContexts) {
    SweepTable(VswitchSweeps::kEnsContexts);
}

TEST_F(DvsFaultSweep, PortsAndVms) {
    SweepTable(VswitchSweeps::kPortsAndVms);
}

}  // namespace
