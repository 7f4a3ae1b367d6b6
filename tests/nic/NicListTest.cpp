// `nic list`, `nic up` and `nic down` in-process, on the default host and on hosts made for the
// case.
#include <nlohmann/json.hpp>

#include "hostsim/values/LocalMac.h"
#include "support/CommandTest.h"

namespace {

using HostSim::LocalMac;
using HostSim::MacKind;
using nlohmann::json;
using Testing::Int;
using Testing::Rows;
using Testing::RowWhere;
using Testing::Str;

// The number a name like "hwnic3" ends in.
std::uint32_t NicNumber(const std::string& name) {
    return static_cast<std::uint32_t>(name.back() - '0');
}

json PciNic(const std::string& name) {
    return {{"name", name},
            {"pci",
             {{"address", "0000:0" + name.substr(name.size() - 1) + ":00.0"},
              {"vendor", "Zanvex"},
              {"device", "ZX-10G"}}},
            {"driver", "zxnet"},
            {"speed", 10000},
            {"mac", LocalMac(MacKind::PciNic, NicNumber(name))}};
}

json PseudoNic(const std::string& name, const std::string& descriptor) {
    return {{"name", name},
            {"descriptor", descriptor},
            {"driver", "pseudonet"},
            {"speed", 100},
            {"mac", LocalMac(MacKind::PseudoNic, NicNumber(name))}};
}

class NicListTest : public Testing::CommandTest {
protected:
    void UseNics(const json& nics) { HostSim::ImportProfile(json{{"nics", nics}}.dump()); }

    std::string DescriptionOf(const std::string& descriptor) {
        UseNics(json::array({PseudoNic("pseudo0", descriptor)}));
        auto list = RunList({"nic", "list"});
        return Str(RowWhere(list, "Name", "pseudo0"), "Description");
    }
};

TEST_F(NicListTest, DefaultHostRowsCarryEveryFieldInOrder) {
    auto list = RunList({"nic", "list"});
    auto rows = Rows(list);
    ASSERT_GE(rows.size(), 4u);
    for (const auto& row : rows) {
        EXPECT_EQ(Testing::FieldNames(row),
                  (std::vector<std::string>{"Name", "PCI Device", "Driver", "Link", "Admin Status",
                                            "Link Status", "Speed", "Duplex", "MAC Address", "MTU",
                                            "Description", "DPU Id"}));
        EXPECT_FALSE(Str(row, "Name").empty());
        EXPECT_NE(Str(row, "Description"), "Unknown Unknown") << Str(row, "Name");
    }
    EXPECT_EQ(Str(rows.front(), "Name"), "hwnic0");
}

TEST_F(NicListTest, PciAndPseudoNicsAreDescribedFromTheirSources) {
    UseNics(json::array({PciNic("hwnic3"), PseudoNic("usbnic0", "USB-NIC:Acme:Fast")}));
    auto list = RunList({"nic", "list"});
    auto rows = Rows(list);
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(Str(rows[0], "Name"), "hwnic3");
    EXPECT_EQ(Str(rows[0], "PCI Device"), "0000:03:00.0");
    EXPECT_EQ(Str(rows[0], "Description"), "Zanvex ZX-10G");
    EXPECT_EQ(Str(rows[0], "Driver"), "zxnet");
    EXPECT_EQ(Int(rows[0], "Speed"), 10000);
    EXPECT_EQ(Str(rows[0], "Duplex"), "Full");
    EXPECT_EQ(Str(rows[0], "MAC Address"), LocalMac(MacKind::PciNic, 3));
    EXPECT_EQ(Int(rows[0], "MTU"), 1500);
    EXPECT_EQ(Str(rows[0], "DPU Id"), "N/A");
    EXPECT_EQ(Str(rows[1], "PCI Device"), "Pseudo");
    EXPECT_EQ(Str(rows[1], "Description"), "Acme Fast");
}

TEST_F(NicListTest, DescriptorKindsAreMatchedOnTheStartOfTheDescriptor) {
    EXPECT_EQ(DescriptionOf("ACPI-NIC:Ostrel:Onboard"), "Ostrel Onboard");
    EXPECT_EQ(DescriptionOf("PhyDev:Kelm:Virtio"), "Kelm Virtio");
    EXPECT_EQ(DescriptionOf("PhyDevXyz:Kelm:Virtio"), "Kelm Virtio");
    EXPECT_EQ(DescriptionOf("Sample"), "Unknown Unknown");
    EXPECT_EQ(DescriptionOf("usb-nic:Acme:Fast"), "Unknown Unknown");
    EXPECT_EQ(DescriptionOf("PhyD"), "Unknown Unknown");
    EXPECT_EQ(DescriptionOf(":::"), "Unknown Unknown");
}

TEST_F(NicListTest, KnownKindWithMissingFieldsShowsUnknownForWhatIsMissing) {
    EXPECT_EQ(DescriptionOf("USB-NIC:Acme"), "Acme Unknown");
    EXPECT_EQ(DescriptionOf("USB-NIC"), "Unknown Unknown");
    EXPECT_EQ(DescriptionOf("USB-NIC::Fast"), "Fast Unknown");
}

TEST_F(NicListTest, LongDescriptorIsCutToTheBufferBeforeItIsSplit) {
    // 127 characters fit beside the terminator; "USB-NIC:" takes 8 of them.
    std::string expected(127 - 8, 'v');
    expected.append(" Unknown");
    EXPECT_EQ(DescriptionOf("USB-NIC:" + std::string(130, 'v') + ":Fast"), expected);
}

TEST_F(NicListTest, EmptyOrFailingDescriptorGivesUnknownAndTheOtherRowsStay) {
    json failing = PseudoNic("pseudo1", "USB-NIC:Acme:Fast");
    failing["descriptorError"] = "descriptor unreadable";
    UseNics(json::array({PseudoNic("pseudo0", ""), failing, PciNic("hwnic1")}));
    auto list = RunList({"nic", "list"});
    ASSERT_EQ(list->GetCount(), 3u);
    EXPECT_EQ(Str(RowWhere(list, "Name", "pseudo0"), "Description"), "Unknown Unknown");
    EXPECT_EQ(Str(RowWhere(list, "Name", "pseudo0"), "PCI Device"), "Pseudo");
    EXPECT_EQ(Str(RowWhere(list, "Name", "pseudo1"), "Description"), "Unknown Unknown");
    EXPECT_EQ(Str(RowWhere(list, "Name", "hwnic1"), "Description"), "Zanvex ZX-10G");
}

TEST_F(NicListTest, HostWithoutNicsListsNothing) {
    UseNics(json::array());
    auto list = RunList({"nic", "list"});
    ASSERT_TRUE(list);
    EXPECT_EQ(list->GetCount(), 0u);
}

// The host reports duplex 2 for half, and 0 while the link is down.
TEST_F(NicListTest, DuplexOtherThanOneIsHalfAndDpuIsShown) {
    json half = PciNic("hwnic1");
    half["duplex"] = 2;
    json odd = PciNic("hwnic2");
    odd["cableConnected"] = false;
    odd["dpuId"] = "dpu-0001";
    UseNics(json::array({half, odd}));
    auto list = RunList({"nic", "list"});
    EXPECT_EQ(Str(RowWhere(list, "Name", "hwnic1"), "Duplex"), "Half");
    EXPECT_EQ(Str(RowWhere(list, "Name", "hwnic2"), "Duplex"), "Half");
    EXPECT_EQ(Str(RowWhere(list, "Name", "hwnic2"), "DPU Id"), "dpu-0001");
}

TEST_F(NicListTest, AFailureInALaterRowDropsTheWholeList) {
    UseNics(json::array({PciNic("hwnic1"), PciNic("hwnic2"), PciNic("hwnic3"), PciNic("hwnic4"),
                         PciNic("hwnic5")}));
    HostSim::InjectFault("Pnic::GetDriverName", "hwnic5", "driver gone");
    EXPECT_EQ(RunError({"nic", "list"}), "Unable to list NICs.  Error was driver gone");
    HostSim::ClearFaults();
    HostSim::InjectFault("SmartNicInfo::GetSmartNicByPnic", "", "no DPU service");
    EXPECT_EQ(RunError({"nic", "list"}), "Unable to list NICs.  Error was no DPU service");
}

class NicLinkStateTest : public Testing::CommandTest {};

TEST_F(NicLinkStateTest, DownThenUpShowsInTheList) {
    EXPECT_TRUE(std::dynamic_pointer_cast<CppTools::MetaObj::MetaBool>(
                    RunOk({"nic", "down", "-n", "hwnic1"}))
                    ->GetValue());
    auto list = RunList({"nic", "list"});
    auto row = RowWhere(list, "Name", "hwnic1");
    EXPECT_EQ(Str(row, "Admin Status"), "Down");
    EXPECT_EQ(Str(row, "Link Status"), "Down");
    EXPECT_EQ(Str(row, "Link"), "Down");

    RunOk({"nic", "up", "--nic-name", "hwnic1"});
    row = RowWhere(RunList({"nic", "list"}), "Name", "hwnic1");
    EXPECT_EQ(Str(row, "Admin Status"), "Up");
    // Up again asks the host again and still reports true.
    EXPECT_TRUE(
        std::dynamic_pointer_cast<CppTools::MetaObj::MetaBool>(RunOk({"nic", "up", "-n", "hwnic1"}))
            ->GetValue());
}

TEST_F(NicLinkStateTest, UnknownNicIsNamedInTheError) {
    EXPECT_EQ(RunError({"nic", "up", "-n", "nosuch"}), "There is no pnic with name nosuch");
    EXPECT_EQ(RunError({"nic", "down", "-n", "nosuch"}), "There is no pnic with name nosuch");
}

TEST_F(NicLinkStateTest, HostFailureIsReportedUnchanged) {
    HostSim::InjectFault("Pnic::SetLinkState", "hwnic1", "Device busy");
    EXPECT_EQ(RunError({"nic", "down", "-n", "hwnic1"}), "Device busy");
    EXPECT_EQ(RunError({"nic", "up", "-n", "hwnic1"}), "Device busy");
    RunOk({"nic", "down", "-n", "hwnic0"});
}

}  // namespace
