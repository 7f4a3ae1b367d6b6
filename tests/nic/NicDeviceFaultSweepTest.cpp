// Every host operation of every NIC device command, failed in turn: each run ends in an error
// and no root, except where a listing leaves a NIC out or shows "N/A" for it, and where the
// network model is made ahead of the command's guarded block.
#include <algorithm>

#include "support/CommandTest.h"

namespace {

struct SweepCase {
    std::vector<std::string> words;
    std::vector<std::string> expected;  // operations the sweep must have failed
    std::vector<std::string> handled = {};
    std::vector<std::string> escaping = {};
};

class NicDeviceFaultSweep : public Testing::CommandTest {
protected:
    void Sweep(const std::vector<SweepCase>& cases) {
        for (const auto& sweep : cases) {
            SCOPED_TRACE(::testing::PrintToString(sweep.words));
            std::vector<std::string> swept;
            for (const auto& call :
                 ExpectEveryFaultFails(sweep.words, {sweep.handled, sweep.escaping})) {
                swept.push_back(call.operation);
            }
            for (const auto& operation : sweep.expected) {
                EXPECT_NE(std::find(swept.begin(), swept.end(), operation), swept.end())
                    << operation;
            }
        }
    }
};

const std::vector<std::string> kNetqueueRead{"Pnic::GetNetqueueParams"};

TEST_F(NicDeviceFaultSweep, Sriov) {
    Sweep({
        {{"sriovnic", "list"},
         {"NetworkInfoImpl::GetSriovNics", "Pnic::GetName", "Pnic::GetPciDevice",
          "PciDevice::GetAddress", "Pnic::IsLinkUp", "Pnic::GetMacAddress", "Pnic::GetMtu"}},
        {{"sriovnic", "vf", "list", "-n", "hwnic2"},
         {"NetworkInfoImpl::GetSriovNicByName", "NetworkInfoImpl::GetSriovNicVFInfo"}},
        {{"sriovnic", "vf", "stats", "-n", "hwnic2", "-v", "1"},
         {"NetworkInfoImpl::GetSriovNicByName", "NetworkInfoImpl::GetSriovNicVFStats"},
         {},
         {"NetworkInfoImpl::NetworkInfoImpl"}},
    });
}

TEST_F(NicDeviceFaultSweep, Netqueue) {
    Sweep({
        {{"nic", "queue", "count", "get"},
         {"NetworkInfo::GetPnics", "Pnic::GetName"},
         kNetqueueRead},
        {{"nic", "queue", "count", "get", "-n", "hwnic2"},
         {"NetworkInfo::GetPnicByName", "Pnic::GetNetqueueParams"}},
        {{"nic", "queue", "count", "set", "-n", "hwnic2", "--tx=true", "-q", "4"},
         {"NetworkFactory::GetNetworkInfo", "Pnic::SetNetqueueParams"}},
        {{"nic", "queue", "filterclass", "list"}, {"NetworkInfo::GetPnics"}, kNetqueueRead},
        {{"nic", "queue", "loadbalancer", "list"}, {"NetworkInfo::GetPnics"}, kNetqueueRead},
        {{"nic", "queue", "loadbalancer", "set", "-n", "hwnic2", "--rxqpair=false"},
         {"Pnic::SetNetqueueParams"}},
        {{"nic", "queue", "loadbalancer", "state", "list"},
         {"NetworkInfo::GetPnics"},
         kNetqueueRead},
        {{"nic", "queue", "loadbalancer", "state", "set", "-n", "hwnic2", "-e", "false"},
         {"Pnic::SetNetqueueParams"}},
        {{"nic", "queue", "loadbalancer", "plugin", "list", "-n", "hwnic2"},
         {"Pnic::GetNetqueueParams", "Pnic::GetName"}},
        {{"nic", "queue", "loadbalancer", "plugin", "set", "-n", "hwnic2", "-e", "true", "-m",
          "kelmnetq", "-p", "latencysense"},
         {"Pnic::SetNetqueueParams"}},
    });
}

TEST_F(NicDeviceFaultSweep, CapabilitiesAndDcb) {
    Sweep({
        {{"nic", "hwCap", "supported", "list"},
         {"NetworkInfo::GetPnics", "Pnic::GetName"},
         {"Pnic::GetHwCapabilities"}},
        {{"nic", "hwCap", "activated", "list", "-n", "hwnic0"},
         {"NetworkInfo::GetPnicByName", "Pnic::GetName"},
         {"Pnic::GetHwCapabilities"}},
        {{"nic", "dcb", "status", "get", "-n", "hwnic4"},
         {"DcbInfoImpl::DcbInfoImpl", "DcbInfoImpl::GetMode", "DcbInfoImpl::IsEnabled",
          "DcbInfoImpl::GetCapabilities", "DcbInfoImpl::IsPfcEnabled", "DcbInfoImpl::GetPfcConfig",
          "DcbInfoImpl::GetIeeeEtsConfig", "DcbInfoImpl::GetIeeePfcConfig",
          "DcbInfoImpl::GetAppInfo"}},
    });
}

TEST_F(NicDeviceFaultSweep, Diagnostics) {
    Sweep({
        {{"nic", "eeprom", "dump", "-n", "hwnic0", "-l", "20"},
         {"NetworkInfoImpl::NetworkInfoImpl", "NetworkInfo::GetPnicByName", "Pnic::GetEeprom"}},
        {{"nic", "eeprom", "change", "-n", "hwnic0", "-m", "439026512", "-o", "0", "-v", "1"},
         {"Pnic::SetEeprom"}},
        {{"nic", "register", "dump", "-n", "hwnic0"}, {"Pnic::DumpRegisters"}},
        {{"nic", "selftest", "run", "-n", "hwnic0"}, {"Pnic::RunSelfTest"}},
        {{"nic", "negotiate", "restart", "-n", "hwnic0"}, {"Pnic::RestartNegotiation"}},
    });
}

TEST_F(NicDeviceFaultSweep, Attachment) {
    Sweep({
        {{"nic", "attachment", "add", "-t", "hwnic0", "-b", "hwnic1", "-v", "5"},
         {"NetworkInfoImpl::NetworkInfoImpl", "NetworkInfo::GetPnicByName", "Pnic::AddAttachment"}},
        {{"nic", "attachment", "remove", "-t", "hwnic2", "-b", "hwnic3"},
         {"Pnic::RemoveAttachment"}},
        {{"nic", "attachment", "list"},
         {"NetworkInfo::GetPnics", "Pnic::GetAttachments", "PnicImpl::PnicImpl",
          "Pnic::GetMacAddress", "Pnic::GetName"},
         {},
         {"NetworkFactory::GetNetworkInfo", "NetworkInfoImpl::NetworkInfoImpl"}},
    });
}

}  // namespace
