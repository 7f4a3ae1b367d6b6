// The fault sweep's lines of the NIC and SR-IOV NIC commands: each command line, the host
// operations its sweep must fail, and what else the sweep allows. A listing leaves a NIC out or
// shows "N/A" for it when one of its reads fails. What a failure to make the network model does
// is kModelFailures' to say.
#pragma once

#include "support/CommandTest.h"

namespace NicSweeps {

using Testing::SweepCase;

inline const std::vector<SweepCase> kLinkAndInfo{
    {{"nic", "list"},
     {"NetworkInfo::GetPnics", "Pnic::GetName"},
     {.handledOperations = {"Pnic::GetDeviceDescriptor"}}},
    {{"nic", "get", "-n", "hwnic0"},
     {"NetworkInfo::GetPnicByName", "Pnic::GetPnicInfo", "Pnic::GetPauseParams",
      "Pnic::GetPnicDriverInfo", "SmartNicInfo::GetSmartNicByPnic"}},
    {{"nic", "up", "-n", "hwnic1"}, {}},
    {{"nic", "up", "-n", "hwnic3"}, {}},
    {{"nic", "down", "-n", "hwnic1"}, {}},
    {{"nic", "down", "-n", "hwnic3"}, {}},
};

inline const std::vector<SweepCase> kSetAndStatistics{
    {{"nic", "set", "-n", "hwnic0", "-t", "external", "-S", "100", "-D", "full"},
     {"NetworkInfoImpl::NetworkInfoImpl", "NetworkInfo::GetPnicByName", "Pnic::GetPnicInfo",
      "Pnic::SetPnicInfo", "Pnic::SetSpeedDuplex"}},
    {{"nic", "set", "-n", "hwnic0", "-a"}, {"Pnic::GetPnicInfo", "Pnic::SetSpeedDuplex"}},
    {{"nic", "set", "-n", "hwnic1", "-p", "tp", "-P", "2", "-w", "g", "-l", "3"},
     {"Pnic::GetPnicInfo", "Pnic::SetPnicInfo"}},
    {{"nic", "stats", "get", "-n", "hwnic0"},
     {"PnicImpl::PnicImpl", "PnicImpl::GetPnicStats", "Pnic::GetName"}},
    {{"nic", "vlan", "stats", "get", "-n", "hwnic2"},
     {"VirtualSwitchInfoImpl::GetAllSwitches", "Portset::GetUplinks", "Portset::GetVlanStats"}},
    {{"nic", "vlan", "stats", "set", "-n", "hwnic1", "-e", "true"},
     {"VirtualSwitchInfoImpl::GetAllSwitches", "Portset::GetUplinks",
      "Portset::SetVlanStatsEnabled"}},
};

inline const std::vector<SweepCase> kCoalescing{
    {{"nic", "coalesce", "get"},
     {"NetworkInfo::GetPnics", "Pnic::GetName"},
     {.handledOperations = {"Pnic::GetCoalesceParams"}}},
    {{"nic", "coalesce", "get", "-n", "hwnic0"},
     {"NetworkInfo::GetPnicByName"},
     {.handledOperations = {"Pnic::GetCoalesceParams"}}},
    {{"nic", "coalesce", "set", "-n", "hwnic0", "-r", "5"},
     {"Pnic::GetCoalesceParams", "Pnic::SetCoalesceParams"}},
    {{"nic", "coalesce", "low", "get", "-n", "hwnic0"},
     {"NetworkFactory::GetNetworkInfo", "Pnic::GetCoalesceParams"}},
    {{"nic", "coalesce", "low", "set", "-n", "hwnic0", "-p", "9"},
     {"NetworkFactory::GetNetworkInfo", "Pnic::GetCoalesceParams", "Pnic::SetCoalesceParams"}},
    {{"nic", "coalesce", "high", "get", "-n", "hwnic0"},
     {"NetworkFactory::GetNetworkInfo", "Pnic::GetCoalesceParams"}},
    {{"nic", "coalesce", "high", "set", "-n", "hwnic0", "-p", "9"},
     {"NetworkFactory::GetNetworkInfo", "Pnic::GetCoalesceParams", "Pnic::SetCoalesceParams"}},
};

inline const std::vector<SweepCase> kOffloadSoftwareRingsAndPause{
    {{"nic", "cso", "get"},
     {"NetworkInfo::GetPnics", "Pnic::GetName"},
     {.handledOperations = {"Pnic::GetOffloadParams"}}},
    {{"nic", "cso", "set", "-n", "hwnic1", "-e", "1"},
     {"NetworkInfo::GetPnicByName", "Pnic::GetOffloadParams", "Pnic::SetOffloadParams"}},
    {{"nic", "tso", "get"},
     {"NetworkInfo::GetPnics", "Pnic::GetName"},
     {.handledOperations = {"Pnic::GetOffloadParams"}}},
    {{"nic", "tso", "set", "-n", "hwnic1", "-e", "1"},
     {"NetworkInfo::GetPnicByName", "Pnic::GetOffloadParams", "Pnic::SetOffloadParams"}},
    {{"nic", "sg", "get"},
     {"NetworkInfo::GetPnics", "Pnic::GetName"},
     {.handledOperations = {"Pnic::GetOffloadParams"}}},
    {{"nic", "sg", "set", "-n", "hwnic1", "-e", "1"},
     {"NetworkInfo::GetPnicByName", "Pnic::GetOffloadParams", "Pnic::SetOffloadParams"}},
    {{"nic", "software", "list", "-n", "hwnic6"},
     {"NetworkFactory::GetNetworkInfo", "Pnic::GetName"},
     {.handledOperations = {"Pnic::GetSoftwareSimulation"}}},
    {{"nic", "software", "set", "-n", "hwnic0", "--sg", "true"},
     {"NetworkFactory::GetNetworkInfo", "Pnic::SetSoftwareSimulation"}},
    {{"nic", "ring", "preset", "get", "-n", "hwnic2"}, {"Pnic::GetRingParams"}},
    {{"nic", "ring", "current", "get", "-n", "hwnic2"}, {"Pnic::GetRingParams"}},
    {{"nic", "ring", "current", "set", "-n", "hwnic2", "-t", "64"}, {"Pnic::SetRingParams"}},
    {{"nic", "pauseParams", "list"},
     {"NetworkInfo::GetPnics", "Pnic::GetName"},
     {.handledOperations = {"Pnic::GetPauseParams"}}},
    {{"nic", "pauseParams", "set", "-n", "hwnic0", "--rx", "false"},
     {"Pnic::GetPauseParams", "Pnic::SetPauseParams"}},
};

inline const std::vector<SweepCase> kSriov{
    {{"sriovnic", "list"},
     {"NetworkInfoImpl::GetSriovNics", "Pnic::GetName", "Pnic::GetPciDevice",
      "PciDevice::GetAddress", "Pnic::IsLinkUp", "Pnic::GetMacAddress", "Pnic::GetMtu"}},
    {{"sriovnic", "vf", "list", "-n", "hwnic2"},
     {"NetworkInfoImpl::GetSriovNicByName", "NetworkInfoImpl::GetSriovNicVFInfo"}},
    {{"sriovnic", "vf", "stats", "-n", "hwnic2", "-v", "1"},
     {"NetworkInfoImpl::GetSriovNicByName", "NetworkInfoImpl::GetSriovNicVFStats"}},
};

inline const std::vector<SweepCase> kNetqueue{
    {{"nic", "queue", "count", "get"},
     {"NetworkInfo::GetPnics", "Pnic::GetName"},
     {.handledOperations = {"Pnic::GetNetqueueParams"}}},
    {{"nic", "queue", "count", "get", "-n", "hwnic2"},
     {"NetworkInfo::GetPnicByName", "Pnic::GetNetqueueParams"}},
    {{"nic", "queue", "count", "set", "-n", "hwnic2", "--tx=true", "-q", "4"},
     {"NetworkFactory::GetNetworkInfo", "Pnic::SetNetqueueParams"}},
    {{"nic", "queue", "filterclass", "list"},
     {"NetworkInfo::GetPnics"},
     {.handledOperations = {"Pnic::GetNetqueueParams"}}},
    {{"nic", "queue", "loadbalancer", "list"},
     {"NetworkInfo::GetPnics"},
     {.handledOperations = {"Pnic::GetNetqueueParams"}}},
    {{"nic", "queue", "loadbalancer", "set", "-n", "hwnic2", "--rxqpair=false"},
     {"Pnic::SetNetqueueParams"}},
    {{"nic", "queue", "loadbalancer", "state", "list"},
     {"NetworkInfo::GetPnics"},
     {.handledOperations = {"Pnic::GetNetqueueParams"}}},
    {{"nic", "queue", "loadbalancer", "state", "set", "-n", "hwnic2", "-e", "false"},
     {"Pnic::SetNetqueueParams"}},
    {{"nic", "queue", "loadbalancer", "plugin", "list", "-n", "hwnic2"},
     {"Pnic::GetNetqueueParams", "Pnic::GetName"}},
    {{"nic", "queue", "loadbalancer", "plugin", "set", "-n", "hwnic2", "-e", "true", "-m",
      "kelmnetq", "-p", "latencysense"},
     {"Pnic::SetNetqueueParams"}},
};

inline const std::vector<SweepCase> kCapabilitiesDcbAndDiagnostics{
    {{"nic", "hwCap", "supported", "list"},
     {"NetworkInfo::GetPnics", "Pnic::GetName"},
     {.handledOperations = {"Pnic::GetHwCapabilities"}}},
    {{"nic", "hwCap", "activated", "list", "-n", "hwnic0"},
     {"NetworkInfo::GetPnicByName", "Pnic::GetName"},
     {.handledOperations = {"Pnic::GetHwCapabilities"}}},
    {{"nic", "dcb", "status", "get", "-n", "hwnic4"},
     {"DcbInfoImpl::DcbInfoImpl", "DcbInfoImpl::GetMode", "DcbInfoImpl::IsEnabled",
      "DcbInfoImpl::GetCapabilities", "DcbInfoImpl::IsPfcEnabled", "DcbInfoImpl::GetPfcConfig",
      "DcbInfoImpl::GetIeeeEtsConfig", "DcbInfoImpl::GetIeeePfcConfig", "DcbInfoImpl::GetAppInfo"}},
    {{"nic", "eeprom", "dump", "-n", "hwnic0", "-l", "20"},
     {"NetworkInfoImpl::NetworkInfoImpl", "NetworkInfo::GetPnicByName", "Pnic::GetEeprom"}},
    {{"nic", "eeprom", "change", "-n", "hwnic0", "-m", "439026512", "-o", "0", "-v", "1"},
     {"Pnic::SetEeprom"}},
    {{"nic", "register", "dump", "-n", "hwnic0"}, {"Pnic::DumpRegisters"}},
    {{"nic", "selftest", "run", "-n", "hwnic0"}, {"Pnic::RunSelfTest"}},
    {{"nic", "negotiate", "restart", "-n", "hwnic0"}, {"Pnic::RestartNegotiation"}},
};

inline const std::vector<SweepCase> kAttachment{
    {{"nic", "attachment", "add", "-t", "hwnic0", "-b", "hwnic1", "-v", "5"},
     {"NetworkInfoImpl::NetworkInfoImpl", "NetworkInfo::GetPnicByName", "Pnic::AddAttachment"}},
    {{"nic", "attachment", "remove", "-t", "hwnic2", "-b", "hwnic3"}, {"Pnic::RemoveAttachment"}},
    {{"nic", "attachment", "list"},
     {"NetworkInfo::GetPnics", "Pnic::GetAttachments", "PnicImpl::PnicImpl", "Pnic::GetMacAddress",
      "Pnic::GetName"}},
};

}  // namespace NicSweeps
