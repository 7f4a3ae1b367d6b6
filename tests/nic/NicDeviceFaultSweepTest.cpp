// Every host operation of every NIC device command, failed in turn: each run ends in an error
// and no root, except where the sweep line allows otherwise.
#include "NicSweepCases.h"

namespace {

class NicDeviceFaultSweep : public Testing::CommandTest {};

TEST_F(NicDeviceFaultSweep, Sriov) {
    SweepTable(NicSweeps::kSriov);
}

TEST_F(NicDeviceFaultSweep, Netqueue) {
    SweepTable(NicSweeps::kNetqueue);
}

TEST_F(NicDeviceFaultSweep, CapabilitiesDcbAndDiagnostics) {
    SweepTable(NicSweeps::kCapabilitiesDcbAndDiagnostics);
}

TEST_F(NicDeviceFaultSweep, Attachment) {
    SweepTable(NicSweeps::kAttachment);
}

}  // namespace
