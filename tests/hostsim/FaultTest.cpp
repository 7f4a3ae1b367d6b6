// The choke point: faults injected in-process and from HOSTSIM_FAULTS, and the trace.
#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <vector>

#include "HostSimTest.h"
#include "hostctl/HostCtlException.h"
#include "hostctl/NetworkInfo.h"
#include "hostctl/SmartNic.h"
#include "hostsim/core/Operation.h"
#include "hostsim/core/OperationNames.h"
#include "kelmctl/NetworkInfoImpl.h"
#include "kelmctl/PnicImpl.h"

namespace HostSimTesting {
namespace {

using HostCtl::Lib::HostCtlException;
using HostSim::OperationCall;
using KelmCtl::Network::NetworkInfoImpl;
using KelmCtl::Network::PnicImpl;

class FaultTest : public HostTest {};

// The message of the fault that `operation` throws; empty when it succeeds.
template <class Operation>
std::string FaultOf(Operation operation) {
    try {
        operation();
    } catch (const HostCtlException& error) {
        return error.what();
    }
    return {};
}

TEST_F(FaultTest, AnInjectedFaultFailsItsOperationForItsObjectOnly) {
    HostSim::InjectFault("Pnic::SetLinkState", "hwnic1", "Device busy");
    EXPECT_EQ(FaultOf([] { PnicImpl("hwnic1").SetLinkState(false); }), "Device busy");
    EXPECT_TRUE(PnicImpl("hwnic1").GetAdminStatus());
    EXPECT_EQ(FaultOf([] { PnicImpl("hwnic2").SetLinkState(false); }), "");
    EXPECT_EQ(FaultOf([] { PnicImpl("hwnic1").GetSpeed(); }), "");

    HostSim::InjectFault("NetworkInfo::GetPnics", "", "driver reset");
    EXPECT_EQ(FaultOf([] { NetworkInfoImpl().GetPnics(HostCtl::Network::PnicGetAll); }),
              "driver reset");
    HostSim::ClearFaults();
    EXPECT_EQ(FaultOf([] { NetworkInfoImpl().GetPnics(HostCtl::Network::PnicGetAll); }), "");
}

TEST_F(FaultTest, EveryOperationCanBeMadeToFail) {
    auto pnic = NetworkInfoImpl().GetPnicByName("hwnic5", false);
    auto device = pnic->GetPciDevice();
    auto smartNic = HostCtl::SmartNic::SmartNicInfo::GetSmartNicByPnic("hwnic5");
    HostCtl::Network::PnicInfo info;
    HostCtl::Network::PnicPauseParams pause;
    HostCtl::Network::PnicDriverInfo driver;
    std::vector<std::pair<const char*, std::function<void()>>> operations{
        {"NetworkFactory::GetNetworkInfo",
         [] { HostCtl::Network::NetworkFactory::GetNetworkInfo(); }},
        {"NetworkInfoImpl::NetworkInfoImpl", [] { NetworkInfoImpl(); }},
        {"NetworkInfo::GetPnics", [] { NetworkInfoImpl().GetPnics(HostCtl::Network::PnicGetAll); }},
        {"NetworkInfo::GetPnicByName", [] { NetworkInfoImpl().GetPnicByName("hwnic5", false); }},
        {"PnicImpl::PnicImpl", [] { PnicImpl("hwnic5"); }},
        {"PnicImpl::IsValidPnic", [] { PnicImpl::IsValidPnic("hwnic5"); }},
        {"PnicImpl::Refresh", [] { PnicImpl("hwnic5").Refresh(); }},
        {"Pnic::GetName", [&] { pnic->GetName(); }},
        {"Pnic::GetPciDevice", [&] { pnic->GetPciDevice(); }},
        {"Pnic::GetDuplex", [&] { pnic->GetDuplex(); }},
        {"Pnic::IsLinkUp", [&] { pnic->IsLinkUp(); }},
        {"Pnic::GetLinkStatus", [&] { pnic->GetLinkStatus(); }},
        {"Pnic::GetAdminStatus", [&] { pnic->GetAdminStatus(); }},
        {"Pnic::GetSpeed", [&] { pnic->GetSpeed(); }},
        {"Pnic::GetDriverName", [&] { pnic->GetDriverName(); }},
        {"Pnic::GetMacAddress", [&] { pnic->GetMacAddress(); }},
        {"Pnic::SetLinkState", [&] { pnic->SetLinkState(true); }},
        {"Pnic::GetMtu", [&] { pnic->GetMtu(); }},
        {"Pnic::GetDeviceDescriptor", [&] { pnic->GetDeviceDescriptor(); }},
        {"Pnic::GetPnicInfo", [&] { pnic->GetPnicInfo(info); }},
        {"Pnic::GetPauseParams", [&] { pnic->GetPauseParams(pause); }},
        {"Pnic::GetPnicDriverInfo", [&] { pnic->GetPnicDriverInfo(driver); }},
        {"PciDevice::GetVendorName", [&] { device->GetVendorName(); }},
        {"PciDevice::GetDeviceName", [&] { device->GetDeviceName(); }},
        {"PciDevice::GetAddress", [&] { device->GetAddress(); }},
        {"SmartNicInfo::GetSmartNicByPnic",
         [] { HostCtl::SmartNic::SmartNicInfo::GetSmartNicByPnic("hwnic5"); }},
        {"SmartNic::GetId", [&] { smartNic->GetId(); }},
    };
    for (const auto& [operation, call] : operations) {
        std::string object = std::string(operation).find("Network") == 0 ? "" : "hwnic5";
        HostSim::InjectFault(operation, object, std::string("failed: ") + operation);
        EXPECT_EQ(FaultOf(call), std::string("failed: ") + operation);
        HostSim::ClearFaults();
        EXPECT_EQ(FaultOf(call), "") << operation;
    }
}

TEST_F(FaultTest, TheTraceRecordsOperationsInOrder) {
    auto info = HostCtl::Network::NetworkFactory::GetNetworkInfo();
    HostSim::StartTrace();
    auto pnics = info->GetPnics(HostCtl::Network::PnicGetAll);
    pnics[6]->GetName();
    pnics[6]->GetPciDevice();
    HostCtl::SmartNic::SmartNicInfo::GetSmartNicByPnic("hwnic6");
    HostSim::InjectFault("Pnic::SetLinkState", "", "Device busy");
    FaultOf([&] { pnics[0]->SetLinkState(false); });
    std::vector<OperationCall> expected{{"NetworkInfo::GetPnics", ""},
                                        {"Pnic::GetName", "hwnic6"},
                                        {"Pnic::GetPciDevice", "hwnic6"},
                                        {"SmartNicInfo::GetSmartNicByPnic", "hwnic6"},
                                        {"Pnic::SetLinkState", "hwnic0"}};
    EXPECT_EQ(HostSim::StopTrace(), expected);
    pnics[0]->GetName();
    EXPECT_TRUE(HostSim::StopTrace().empty());
}

// HOSTSIM_FAULTS is read once per process, so the check runs in a process of its own that
// starts with the variable set.
void ReportEnvironmentFaults(const std::string& directory) {
    HostSim::UseStateDirectory(directory);
    std::cerr << "[" << FaultOf([] { PnicImpl("hwnic1").SetLinkState(false); }) << "]";
    std::cerr << "[" << FaultOf([] { PnicImpl("hwnic2").SetLinkState(false); }) << "]";
    std::cerr << "[" << FaultOf([] { NetworkInfoImpl().GetPnics(HostCtl::Network::PnicGetAll); })
              << "]";
    std::cerr << "[" << FaultOf([] { PnicImpl("hwnic0").GetMtu(); }) << "]";
    HostSim::InjectFault("Pnic::GetSpeed", "", "injected");
    std::cerr << "[" << FaultOf([] { PnicImpl("hwnic0").GetSpeed(); }) << "]";
}

TEST_F(FaultTest, FaultsComeFromTheEnvironment) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    setenv("HOSTSIM_FAULTS",
           "Pnic::SetLinkState@hwnic1=Device busy; ; NetworkInfo::GetPnics =driver reset;"
           " Pnic::GetMtu;",
           1);
    EXPECT_EXIT(
        {
            ReportEnvironmentFaults(Directory());
            ExitRemovingDirectories(0);
        },
        ::testing::ExitedWithCode(0),
        "\\[Device busy\\]\\[\\]\\[driver reset\\]\\[Pnic::GetMtu failed\\]"
        "\\[injected\\]");
    unsetenv("HOSTSIM_FAULTS");
}

// A fault entry that can never fire is refused, so that a test can't pass without its fault:
// every operation then fails with the reason, naming the entry.
void ReportFirstOperation(const std::string& directory) {
    HostSim::UseStateDirectory(directory);
    std::cerr << "[" << FaultOf([] { PnicImpl("hwnic2").GetMtu(); }) << "]";
}

TEST_F(FaultTest, AnEntryThatNamesNoOperationIsRefused) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const std::vector<std::pair<std::string, std::string>> cases{
        {"NetworkInfo::GetPnic=x",
         "HOSTSIM_FAULTS entry \"NetworkInfo::GetPnic=x\": there is no host operation "
         "NetworkInfo::GetPnic; did you mean NetworkInfo::GetPnics?"},
        {"garbage",
         "HOSTSIM_FAULTS entry \"garbage\": there is no host operation garbage; an entry is "
         "Interface::Operation[@object][=message]"},
        {"Pnic::GetMtu=ok;pnic::setlinkstate@hwnic1",
         "HOSTSIM_FAULTS entry \"pnic::setlinkstate@hwnic1\": there is no host operation "
         "pnic::setlinkstate; did you mean Pnic::SetLinkState?"},
        {"=orphan",
         "HOSTSIM_FAULTS entry \"=orphan\": there is no host operation ; an entry is "
         "Interface::Operation[@object][=message]"},
        {"Pnic::GetSpeed Pnic::GetMtu=two",
         "HOSTSIM_FAULTS entry \"Pnic::GetSpeed Pnic::GetMtu=two\": there is no host operation "
         "Pnic::GetSpeed Pnic::GetMtu"},
        {"Pnic::GetMtu@ =x", "HOSTSIM_FAULTS entry \"Pnic::GetMtu@ =x\": no object follows the @"},
    };
    for (const auto& [faults, message] : cases) {
        setenv("HOSTSIM_FAULTS", faults.c_str(), 1);
        EXPECT_EXIT(
            {
                ReportFirstOperation(Directory());
                ExitRemovingDirectories(0);
            },
            ::testing::ExitedWithCode(0), ::testing::StrEq("[" + message + "]"))
            << faults;
    }
    unsetenv("HOSTSIM_FAULTS");
}

TEST_F(FaultTest, AnObjectMayHoldBlanks) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    setenv("HOSTSIM_FAULTS", " PortGroup::GetVlanId @ VM Network = no VLAN ", 1);
    EXPECT_EXIT(
        {
            HostSim::UseStateDirectory(Directory());
            HostSim::PassOperation("PortGroup::GetName", "VM Network");
            std::cerr << "[" << FaultOf([] {
                HostSim::PassOperation("PortGroup::GetVlanId", "VM Network");
            }) << "]";
            ExitRemovingDirectories(0);
        },
        ::testing::ExitedWithCode(0), ::testing::StrEq("[ no VLAN ]"));
    unsetenv("HOSTSIM_FAULTS");
}

TEST_F(FaultTest, InjectingAFaultOfNoOperationIsRefused) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {"Pnic::GetNme",
         "Unable to inject a fault: there is no host operation Pnic::GetNme; did you mean "
         "Pnic::GetName?"},
        {"",
         "Unable to inject a fault: there is no host operation ; an entry is "
         "Interface::Operation[@object][=message]"},
    };
    for (const auto& entry : cases) {
        EXPECT_EQ(FaultOf([&entry] { HostSim::InjectFault(entry.first, "", "x"); }), entry.second);
    }
    EXPECT_EQ(FaultOf([] { PnicImpl("hwnic1").GetName(); }), "");
}

// The table of operations comes from the sources, so it holds every operation of every
// subject: here those the NIC, switch and firewall operations pass.
TEST_F(FaultTest, TheOperationTableHoldsTheOperationsOfEverySubject) {
    std::vector<std::string_view> names;
    for (std::size_t i = 0; i < HostSim::OperationCount(); ++i) {
        names.push_back(HostSim::OperationName(i));
    }
    EXPECT_TRUE(std::is_sorted(names.begin(), names.end()));
    EXPECT_EQ(std::adjacent_find(names.begin(), names.end()), names.end());
    for (const char* name :
         {"Pnic::SetLinkState", "NetworkInfoImpl::NetworkInfoImpl", "VirtualSwitch::SetMTU",
          "FirewallRuleset::AddAllowedIp", "SystemInfo::IsFirewallEnabled"}) {
        EXPECT_TRUE(std::binary_search(names.begin(), names.end(), name)) << name;
    }
    EXPECT_FALSE(std::binary_search(names.begin(), names.end(), "Interface::Operation"));
}

}  // namespace
}  // namespace HostSimTesting
