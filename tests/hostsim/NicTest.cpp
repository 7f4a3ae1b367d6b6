// The NIC subject's host operations, on the default host and on hosts built for the case.
#include <set>

#include "HostSimTest.h"
#include "hostctl/HostCtlException.h"
#include "hostctl/NetworkInfo.h"
#include "hostctl/SmartNic.h"
#include "kelmctl/NetworkInfoImpl.h"
#include "kelmctl/PnicImpl.h"

namespace HostSimTesting {
namespace {

using HostCtl::Lib::HostCtlException;
using HostCtl::Network::PnicDriverInfo;
using HostCtl::Network::PnicInfo;
using HostCtl::Network::PnicPauseParams;
using KelmCtl::Network::NetworkInfoImpl;
using KelmCtl::Network::PnicImpl;

class NicTest : public HostTest {};

TEST_F(NicTest, EveryNicIsListedInTheProfilesOrder) {
    InitHost(
        {"--profile=" + WriteProfile({{"nics",
                                       {PciNic("hwnic7", PciMac(7)), PciNic("hwnic2", PciMac(2)),
                                        PciNic("hwnic5", PciMac(5))}}})});
    auto info = HostCtl::Network::NetworkFactory::GetNetworkInfo();
    EXPECT_EQ(Names(info->GetPnics(HostCtl::Network::PnicGetAll)),
              (std::vector<std::string>{"hwnic7", "hwnic2", "hwnic5"}));
}

TEST_F(NicTest, ALookUpByNameGivesTheNicOrNull) {
    NetworkInfoImpl info;
    auto pnic = info.GetPnicByName("hwnic2", false);
    ASSERT_TRUE(pnic);
    EXPECT_EQ(pnic->GetName(), "hwnic2");
    EXPECT_EQ(pnic->GetMtu(), 9000u);
    EXPECT_EQ(info.GetPnicByName("hwnic99", true), nullptr);
    EXPECT_EQ(info.GetPnicByName("", false), nullptr);
    EXPECT_TRUE(PnicImpl::IsValidPnic("hwnic10"));
    EXPECT_FALSE(PnicImpl::IsValidPnic("hwnic11"));
    EXPECT_THROW(PnicImpl("hwnic11"), HostCtlException);
}

TEST_F(NicTest, ANicOnPciHasAPciDeviceAndAPseudoNicADescriptor) {
    PnicImpl physical("hwnic4");
    auto device = physical.GetPciDevice();
    ASSERT_TRUE(device);
    EXPECT_EQ(device->GetAddress(), "0000:5e:00.0");
    EXPECT_EQ(device->GetVendorName(), "Zanvex Networks");
    EXPECT_EQ(device->GetDeviceName(), "ZX2520 25GbE SFP28 Dual Port Adapter");

    std::vector<std::string> descriptors;
    for (const char* name : {"hwnic6", "hwnic7", "hwnic8"}) {
        PnicImpl pseudo(name);
        EXPECT_EQ(pseudo.GetPciDevice(), nullptr) << name;
        descriptors.push_back(pseudo.GetDeviceDescriptor().substr(0, 8));
    }
    EXPECT_EQ(descriptors, (std::vector<std::string>{"USB-NIC:", "ACPI-NIC", "PhyDev:T"}));
}

TEST_F(NicTest, ADescriptorCanBeEmptyOrFailForATestHost) {
    auto failing = PseudoNic("hwnic1", PseudoMac(1), "");
    failing["descriptorError"] = "Unable to read the device descriptor";
    InitHost({"--profile=" +
              WriteProfile({{"nics", {PseudoNic("hwnic0", PseudoMac(0), ""), failing}}})});
    EXPECT_EQ(PnicImpl("hwnic0").GetDeviceDescriptor(), "");
    try {
        PnicImpl("hwnic1").GetDeviceDescriptor();
        ADD_FAILURE() << "the descriptor was read";
    } catch (const HostCtlException& error) {
        EXPECT_STREQ(error.what(), "Unable to read the device descriptor");
    }
}

TEST_F(NicTest, LinkStateFollowsAdminStateAndCable) {
    PnicImpl up("hwnic2");
    EXPECT_TRUE(up.GetAdminStatus());
    EXPECT_TRUE(up.IsLinkUp());
    EXPECT_TRUE(up.GetLinkStatus());
    EXPECT_EQ(up.GetSpeed(), 10000u);
    EXPECT_EQ(up.GetDuplex(), 1);

    up.SetLinkState(false);
    PnicImpl reread("hwnic2");
    for (const PnicImpl* pnic : {&up, &reread}) {
        EXPECT_FALSE(pnic->GetAdminStatus());
        EXPECT_FALSE(pnic->IsLinkUp());
        EXPECT_FALSE(pnic->GetLinkStatus());
        EXPECT_EQ(pnic->GetSpeed(), 0u);
        EXPECT_NE(pnic->GetDuplex(), 1);
    }
    PnicInfo info;
    up.GetPnicInfo(info);
    EXPECT_EQ(info.linkStatus, "Down");

    up.SetLinkState(true);
    EXPECT_TRUE(PnicImpl("hwnic2").IsLinkUp());

    // hwnic4 has no cable: up brings the admin state up and the link stays down.
    PnicImpl unplugged("hwnic4");
    unplugged.SetLinkState(true);
    unplugged.Refresh();
    EXPECT_TRUE(unplugged.GetAdminStatus());
    EXPECT_FALSE(unplugged.IsLinkUp());
    EXPECT_FALSE(unplugged.GetLinkStatus());
}

TEST_F(NicTest, RefreshShowsAChangeMadeThroughAnotherObject) {
    PnicImpl first("hwnic3");
    EXPECT_FALSE(first.GetAdminStatus());
    NetworkInfoImpl().GetPnicByName("hwnic3", false)->SetLinkState(true);
    EXPECT_FALSE(first.GetAdminStatus());
    first.Refresh();
    EXPECT_TRUE(first.GetAdminStatus());
    EXPECT_TRUE(first.IsLinkUp());
}

TEST_F(NicTest, ChangesOfARemovedNicAreRefused) {
    auto pnic = NetworkInfoImpl().GetPnicByName("hwnic0", false);
    InitHost({"--profile=empty"});
    EXPECT_THROW(pnic->SetLinkState(false), HostCtlException);
    EXPECT_TRUE(AllNicNames().empty());
}

TEST_F(NicTest, DetailRecordsComeFromTheProfile) {
    PnicImpl pnic("hwnic0");
    PnicInfo info;
    pnic.GetPnicInfo(info);
    EXPECT_EQ(info.supportedPorts, std::vector<std::uint32_t>{0});
    ASSERT_EQ(info.advertisedLinkModes.size(), 3u);
    EXPECT_EQ(info.advertisedLinkModes[2].speed, 1000u);
    EXPECT_EQ(info.advertisedLinkModes[2].duplex, 1u);
    EXPECT_EQ(info.advertisedLinkModes[2].media, 2u);
    EXPECT_EQ(info.supportedLinkModes.size(), 5u);
    EXPECT_EQ(info.supportsAutoNegotiation, 1);
    EXPECT_EQ(info.phyAddress, 1u);
    EXPECT_EQ(info.wakeOn,
              std::vector<HostCtl::Network::WakeOnMode>{HostCtl::Network::WakeOnMagic});
    EXPECT_EQ(info.supportsMessageLevel, 1);
    EXPECT_EQ(info.messageLevel, 7u);
    EXPECT_EQ(info.linkStatus, "Up");
    EXPECT_EQ(info.portChanged + info.wakeOnChanged + info.messageLevelChanged, 0);

    PnicPauseParams pause;
    pnic.GetPauseParams(pause);
    EXPECT_EQ(pause.supported, 1);
    EXPECT_EQ(pause.rxResolution, 1u);

    PnicDriverInfo driver;
    pnic.GetPnicDriverInfo(driver);
    EXPECT_EQ(driver.driver, "tarn1g");
    EXPECT_EQ(driver.version, "3.4.12.0");
    EXPECT_EQ(driver.busInfo, "0000:02:00.0");
    EXPECT_EQ(pnic.GetMacAddress().GetStringAddress(), ExportHost()["nics"][0]["mac"]);
}

TEST_F(NicTest, OnlyADpuBackedNicHasASmartNic) {
    auto smartNic = HostCtl::SmartNic::SmartNicInfo::GetSmartNicByPnic("hwnic5");
    ASSERT_TRUE(smartNic);
    EXPECT_EQ(smartNic->GetId(), "zxdpu-4a1f-0001");
    EXPECT_EQ(HostCtl::SmartNic::SmartNicInfo::GetSmartNicByPnic("hwnic0"), nullptr);
    EXPECT_EQ(HostCtl::SmartNic::SmartNicInfo::GetSmartNicByPnic("hwnic42"), nullptr);
}

// The default host has something to show for every field that the NIC commands read.
TEST_F(NicTest, TheDefaultHostVariesEveryField) {
    std::set<bool> admin, link, wakeOn, messageLevel, pause, dpu, pci;
    std::set<std::uint32_t> speeds, mtus, ports;
    for (const auto& pnic : NetworkInfoImpl().GetPnics(HostCtl::Network::PnicGetAll)) {
        admin.insert(pnic->GetAdminStatus());
        link.insert(pnic->IsLinkUp());
        speeds.insert(pnic->GetSpeed());
        mtus.insert(pnic->GetMtu());
        pci.insert(pnic->GetPciDevice() != nullptr);
        PnicInfo info;
        pnic->GetPnicInfo(info);
        wakeOn.insert(info.supportsWakeOn != 0 && info.wakeOn.empty());
        messageLevel.insert(info.supportsMessageLevel != 0);
        ports.insert(info.port);
        PnicPauseParams params;
        pnic->GetPauseParams(params);
        pause.insert(params.supported != 0);
        dpu.insert(HostCtl::SmartNic::SmartNicInfo::GetSmartNicByPnic(pnic->GetName()) != nullptr);
    }
    for (const auto* both : {&admin, &link, &wakeOn, &messageLevel, &pause, &dpu, &pci}) {
        EXPECT_EQ(both->size(), 2u);
    }
    EXPECT_EQ(speeds, (std::set<std::uint32_t>{0, 1000, 10000, 25000}));
    EXPECT_EQ(mtus, (std::set<std::uint32_t>{1500, 9000}));
    EXPECT_GE(ports.size(), 5u);
}

}  // namespace
}  // namespace HostSimTesting
