// Every host operation of the Kelm interface and netstack commands, failed in turn: each run
// ends in an error message and no root, except where a command handles the failure itself.
#include <algorithm>

#include "support/CommandTest.h"

namespace {

using Words = std::vector<std::string>;

class InterfaceFaultSweep : public Testing::CommandTest {
protected:
    // Sweeps `network ip <words...>` and checks that the sweep failed each of `expected`.
    void Sweep(const Words& words, const Words& expected, const SweepRules& rules = {}) {
        Words line{"ip"};
        line.insert(line.end(), words.begin(), words.end());
        SCOPED_TRACE(::testing::PrintToString(line));
        Words swept;
        for (const auto& call : ExpectEveryFaultFails(line, rules)) {
            swept.push_back(call.operation);
        }
        for (const auto& operation : expected) {
            EXPECT_NE(std::find(swept.begin(), swept.end(), operation), swept.end()) << operation;
        }
    }
};

TEST_F(InterfaceFaultSweep, Lifecycle) {
    // The netstack look-up and the connection point's validity come ahead of the guarded
    // block.
    SweepRules add;
    add.escapingOperations = {"NetworkInfoImpl::NetworkInfoImpl",
                              "NetworkInfo::ListNetstackInstances", "NetstackInstance::GetKey",
                              "ConnectionPoint::IsValid"};
    Sweep({"interface", "add", "-p", "VM Network", "-i", "kelm5", "-N", "defaultTcpipStack"},
          {"KelmNicInfoImpl::AddKelmNic", "KelmNic::SetIpConfig"}, add);
    SweepRules dvport;
    dvport.escapingOperations = {"NetworkInfoImpl::NetworkInfoImpl",
                                 "NetworkInfo::ListNetstackInstances", "NetstackInstance::GetKey"};
    Sweep({"interface", "add", "-s", "distswitch0", "-P", "9", "-N", "glidex"},
          {"KelmNicInfoImpl::AddKelmNic", "KelmNicInfoImpl::GetKelmNicsByTag", "KelmNic::AddTag",
           "KelmNic::GetNetstackInstanceKey"},
          dvport);
    SweepRules remove;
    remove.escapingOperations = {"ConnectionPoint::IsValid"};
    Sweep({"interface", "remove", "-p", "Management Network"}, {"KelmNicInfoImpl::RemoveKelmNic"},
          remove);
    // A DVPort's validity is first asked while the DVPort is built, in the guarded block.
    Sweep({"interface", "remove", "-s", "distswitch0", "-P", "8"},
          {"KelmNicInfoImpl::RemoveKelmNic", "ConnectionPoint::IsValid"});
    Sweep({"interface", "remove", "-i", "kelm2"}, {"KelmNicInfo::GetKelmNics", "KelmNic::Remove"});
}

TEST_F(InterfaceFaultSweep, ListingsAndSettings) {
    Sweep({"interface", "list"},
          {"KelmNicInfo::GetKelmNics", "KelmNic::GetInterfaceName", "KelmNic::GetMacAddress",
           "KelmNic::GetConnectionPoint", "KelmNic::GetMtu", "KelmNic::IsEnabled"});
    Sweep({"interface", "list", "-t", "system", "-N", "defaultTcpipStack"},
          {"KelmNicInfoImpl::GetKelmNicsByInstanceKey"});
    Sweep({"interface", "set", "-i", "kelm0", "-e", "false", "-m", "9000"},
          {"KelmNic::Disable", "KelmNic::SetMtu"});
    Sweep({"interface", "ipv4", "get"},
          {"KelmNic::GetIpConfig", "RoutingInfoImpl::GetKelmDefaultGateway"});
    Sweep({"interface", "ipv4", "set", "-i", "kelm0", "-t", "static", "-I", "192.0.2.50", "-N",
           "255.255.255.0"},
          {"KelmNicInfoImpl::GetKelmNicByInterface", "KelmNic::SetIpConfig"});
    Sweep({"interface", "ipv6", "get"}, {"KelmNic::GetIpConfig"});
    Sweep({"interface", "ipv6", "set", "-i", "kelm0", "-e", "true"}, {"KelmNic::SetIpConfig"});
    Sweep({"interface", "ipv6", "address", "list"}, {"KelmNic::GetIpConfig"});
    Sweep({"interface", "ipv6", "address", "add", "-i", "kelm0", "-I", "2001:db8:0:1::77/64"},
          {"KelmNic::SetIpConfig"});
    Sweep({"interface", "ipv6", "address", "remove", "-i", "kelm0", "-I", "2001:db8:0:1::10/64"},
          {"KelmNic::SetIpConfig"});
}

TEST_F(InterfaceFaultSweep, Tags) {
    Sweep({"interface", "tag", "add", "-i", "kelm0", "-t", "Provisioning"},
          {"NetworkInfo::GetNetstackState", "KelmNic::AddTag"});
    Sweep({"interface", "tag", "get", "-i", "kelm0"}, {"KelmNic::GetTags"});
}

TEST_F(InterfaceFaultSweep, Netstacks) {
    Sweep({"netstack", "list"}, {"NetworkInfo::ListNetstackInstances"});
    Sweep({"netstack", "get", "-N", "glidex"},
          {"NetworkInfo::LookupNetstackInstanceByKey", "NetstackInstance::GetState",
           "NetstackInstance::GetCurrentMaxConnections", "NetstackInstance::GetEcnStatus"});
    Sweep({"netstack", "add", "-N", "mirrorlock", "--disabled"},
          {"NetworkInfo::AddNetstackInstance"});
    Sweep({"netstack", "set", "-N", "glidex", "-n", "Glide", "-m", "5000", "-c", "newreno", "--ecn",
           "disabled"},
          {});
}

// Removals, tag removal and enabling need an instance made first, so each of their operations
// is failed by hand on one made for it.
TEST_F(InterfaceFaultSweep, ChangesOnAMadeInstance) {
    RunOk({"ip", "netstack", "add", "-N", "labstack1", "--disabled"});
    const Words enable{"ip", "netstack", "set", "-N", "labstack1", "-e", "true"};
    HostSim::InjectFault("NetstackInstance::Enable", "", "injected fault");
    EXPECT_EQ(RunError(enable), "Error setting configurationinjected fault");
    HostSim::ClearFaults();
    RunOk(enable);

    RunOk({"vswitch", "standard", "portgroup", "add", "-v", "lanswitch0", "-p", "Lab Network"});
    RunOk({"ip", "interface", "add", "-p", "Lab Network", "-N", "labstack1", "-i", "kelm5"});
    RunOk({"ip", "interface", "tag", "add", "-i", "kelm5", "-t", "Management"});
    const Words untag{"ip", "interface", "tag", "remove", "-i", "kelm5", "-t", "Management"};
    for (const char* operation :
         {"Host::GetNetworkInfo", "NetworkInfo::GetPredefinedNetstackKeys", "KelmNic::RemoveTag"}) {
        SCOPED_TRACE(operation);
        HostSim::InjectFault(operation, "", "injected fault");
        EXPECT_EQ(RunError(untag),
                  "Error removing tag Management from interface kelm5. Error was: injected fault");
        HostSim::ClearFaults();
    }
    RunOk(untag);
    RunOk({"ip", "interface", "remove", "-i", "kelm5"});

    const Words remove{"ip", "netstack", "remove", "-N", "labstack1"};
    HostSim::InjectFault("NetworkInfo::RemoveNetstackInstance", "", "injected fault");
    EXPECT_EQ(RunError(remove), "Unable to Remove Netstack Instance. Error was : injected fault");
    HostSim::ClearFaults();
    RunOk(remove);
}

}  // namespace
