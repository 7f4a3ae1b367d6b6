// Every host operation of every IP services command, failed in turn: each run ends in a
// message and no root, except where a command keeps a root beside its message or has no
// handler for what fails.
#include "IpSweepCases.h"

namespace {

class IpServicesFaultSweep : public Testing::CommandTest {};

TEST_F(IpServicesFaultSweep, Routes) {
    SweepTable(IpSweeps::kRoutes);
}

TEST_F(IpServicesFaultSweep, NeighborsConnectionsAndMulticast) {
    SweepTable(IpSweeps::kNeighborsConnectionsAndMulticast);
}

TEST_F(IpServicesFaultSweep, NameServices) {
    SweepTable(IpSweeps::kNameServices);
}

TEST_F(IpServicesFaultSweep, Ipsec) {
    SweepTable(IpSweeps::kIpsec);
}

}  // namespace
