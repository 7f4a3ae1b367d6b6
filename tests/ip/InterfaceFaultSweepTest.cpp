// Every host operation of the Kelm interface and netstack commands, failed in turn: each run
// ends in an error message and no root, except where the sweep line allows otherwise.
#include "IpSweepCases.h"

namespace {

class InterfaceFaultSweep : public Testing::CommandTest {};

TEST_F(InterfaceFaultSweep, Lifecycle) {
    SweepTable(IpSweeps::kInterfaceLifecycle);
}

TEST_F(InterfaceFaultSweep, ListingsSettingsAndTags) {
    SweepTable(IpSweeps::kInterfaceSettings);
}

TEST_F(InterfaceFaultSweep, Netstacks) {
    SweepTable(IpSweeps::kNetstacks);
}

TEST_F(InterfaceFaultSweep, TagRemovalNamesTheTagAndTheInterface) {
    RunOk({"ip", "netstack", "add", "-N", "labstack1"});
    RunOk({"vswitch", "standard", "portgroup", "add", "-v", "lanswitch0", "-p", "Lab Network"});
    RunOk({"ip", "interface", "add", "-p", "Lab Network", "-N", "labstack1", "-i", "kelm5"});
    RunOk({"ip", "interface", "tag", "add", "-i", "kelm5", "-t", "Management"});
    HostSim::InjectFault("KelmNic::RemoveTag", "", "injected fault");
    EXPECT_EQ(RunError({"ip", "interface", "tag", "remove", "-i", "kelm5", "-t", "Management"}),
              "Error removing tag Management from interface kelm5. Error was: injected fault");
}

}  // namespace
