// `nic attachment add|remove|list`: branches on trunks, and the host's rules for them.
#include "nic/NicDeviceTest.h"

namespace {

using NicDeviceTesting::NicDeviceTest;
using NicDeviceTesting::Words;
using Testing::Rows;
using Testing::Str;

struct Attachment {
    std::string trunk;
    std::string branch;
    std::string mac;
    long vlan;
    bool operator==(const Attachment&) const = default;
};

void PrintTo(const Attachment& a, std::ostream* out) {
    *out << a.trunk << "/" << a.branch << "/" << a.mac << "/" << a.vlan;
}

class NicAttachmentTest : public NicDeviceTest {
protected:
    std::vector<Attachment> Attachments(const Words& extra = {}) {
        Words words{"nic", "attachment", "list"};
        words.insert(words.end(), extra.begin(), extra.end());
        std::vector<Attachment> attachments;
        for (const auto& row : Rows(RunList(words))) {
            attachments.push_back({Str(row, "Trunk"), Str(row, "Branch"), Str(row, "Branch MAC"),
                                   Testing::Int(row, "VLAN ID")});
        }
        return attachments;
    }
};

TEST_F(NicAttachmentTest, BranchesAreListedUnderTheirTrunk) {
    Change({"nic", "attachment", "add", "-t", "hwnic0", "-b", "hwnic1", "-v", "200"});
    Change({"nic", "attachment", "add", "-t", "hwnic0", "-b", "hwnic6", "-v", "201"});
    EXPECT_EQ(Attachments(), (std::vector<Attachment>{
                                 {"hwnic0", "hwnic1", MacOf("hwnic1"), 200},
                                 {"hwnic0", "hwnic6", MacOf("hwnic6"), 201},
                                 {"hwnic2", "hwnic3", MacOf("hwnic3"), 110},
                             }));
    EXPECT_EQ(Attachments({"-t", "hwnic2"}),
              (std::vector<Attachment>{{"hwnic2", "hwnic3", MacOf("hwnic3"), 110}}));
    EXPECT_TRUE(Attachments({"-t", "hwnic5"}).empty());
    Change({"nic", "attachment", "remove", "-t", "hwnic0", "-b", "hwnic1"});
    EXPECT_EQ(Attachments({"-t", "hwnic0"}),
              (std::vector<Attachment>{{"hwnic0", "hwnic6", MacOf("hwnic6"), 201}}));
}

TEST_F(NicAttachmentTest, RefusalsInTheCommandsAndTheHostsWords) {
    const std::vector<std::pair<Words, std::string>> cases = {
        {{"add", "-t", "hwnic99", "-b", "hwnic99", "-v", "5"},
         "Trunk uplink and branch uplink need to be different."},
        {{"add", "-t", "hwnic98", "-b", "hwnic99", "-v", "5"}, "Invalid trunk PNIC name hwnic98"},
        {{"add", "-t", "hwnic0", "-b", "hwnic99", "-v", "5"}, "Invalid branch PNIC name hwnic99"},
        {{"add", "-t", "hwnic0", "-b", "hwnic3", "-v", "5"},
         "Failed to attach uplink hwnic3 to hwnic0: NIC hwnic3 is already a branch of trunk "
         "hwnic2"},
        {{"add", "-t", "hwnic2", "-b", "hwnic1", "-v", "110"},
         "Failed to attach uplink hwnic1 to hwnic2: VLAN ID 110 is already used by branch hwnic3 "
         "on trunk hwnic2"},
        {{"add", "-t", "hwnic3", "-b", "hwnic1", "-v", "7"},
         "Failed to attach uplink hwnic1 to hwnic3: NIC hwnic3 is a branch of trunk hwnic2 and "
         "can't be a trunk"},
        {{"add", "-t", "hwnic0", "-b", "hwnic2", "-v", "7"},
         "Failed to attach uplink hwnic2 to hwnic0: NIC hwnic2 is a trunk and can't be a branch"},
        {{"remove", "-t", "hwnic99", "-b", "hwnic3"}, "Invalid PNIC name hwnic99"},
        {{"remove", "-t", "hwnic0", "-b", "hwnic3"},
         "Failed to detach uplink hwnic3 from hwnic0: NIC hwnic3 is not attached to trunk hwnic0"},
        {{"remove", "-t", "hwnic2", "-b", "hwnic99"},
         "Failed to detach uplink hwnic99 from hwnic2: NIC hwnic99 is not attached to trunk "
         "hwnic2"},
        {{"list", "-t", "hwnic99"}, "Invalid PNIC name hwnic99"},
    };
    for (const auto& [extra, message] : cases) {
        Words words{"nic", "attachment"};
        words.insert(words.end(), extra.begin(), extra.end());
        EXPECT_EQ(RunError(words), message) << ::testing::PrintToString(words);
    }
    EXPECT_EQ(Attachments(), (std::vector<Attachment>{{"hwnic2", "hwnic3", MacOf("hwnic3"), 110}}));
}

TEST_F(NicAttachmentTest, TheVlanRangeIsTheHostsToRefuse) {
    for (const char* vlan : {"0", "4095"}) {
        auto result = Run({"nic", "attachment", "add", "-t", "hwnic0", "-b", "hwnic1", "-v", vlan});
        EXPECT_EQ(result.status, CommandHost::ExitRefused) << vlan;
    }
    Change({"nic", "attachment", "add", "-t", "hwnic0", "-b", "hwnic1", "-v", "4094"});
}

}  // namespace
