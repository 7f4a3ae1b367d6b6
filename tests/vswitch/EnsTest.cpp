// ENS contexts: each command's answer on the default host, in order, over one table; what the
// host refuses answers false and changes nothing.
#include "DvsTest.h"

namespace DvsTesting {
namespace {

using Testing::Int;
using Testing::Str;

class Ens : public DvsTest {
protected:
    // "id:switch:affinity" of each context, as `lcore list` shows them.
    Words Contexts() {
        Words shown;
        for (const Row& row : RowsOf({"ens", "lcore", "list"})) {
            shown.push_back(std::to_string(Int(row, "Lcore ID")) + ":" + Str(row, "Switch") + ":" +
                            std::to_string(Int(row, "Affinity")));
        }
        return shown;
    }
};

TEST_F(Ens, TheDefaultHostsContexts) {
    EXPECT_EQ(RunInt({"ens", "maxLcores", "get"}), 8);
    EXPECT_EQ(Contexts(),
              (Words{"0:distswitch0:0", "1:distswitch0:1", "2:lanswitch0:0", "3:null:-1"}));
    EXPECT_EQ(RunString({"ens", "lcore", "switch", "get", "-l", "1"}), "distswitch0");
    EXPECT_EQ(RunString({"ens", "lcore", "switch", "get", "-l", "3"}), "null");
    EXPECT_EQ(RunInt({"ens", "lcore", "affinity", "get", "-l", "1"}), 1);
    EXPECT_EQ(RunInt({"ens", "lcore", "affinity", "get", "-l", "3"}), -1);
}

// A change and the host's answer, run in order on one host.
struct Step {
    Words words;
    bool answer;
};

TEST_F(Ens, ChangesAndRefusalsInOrder) {
    const std::vector<Step> steps = {
        {{"ens", "lcore", "add", "-l", "3"}, false},        // a duplicate id
        {{"ens", "lcore", "add", "-l", "-1"}, false},       // no such id
        {{"ens", "lcore", "add", "-l", "1024"}, false},     // beyond the host's ids
        {{"ens", "maxLcores", "set", "-n", "3"}, false},    // below the 4 contexts
        {{"ens", "maxLcores", "set", "-n", "257"}, false},  // beyond the host's maximum
        {{"ens", "maxLcores", "set", "-n", "5"}, true},
        {{"ens", "lcore", "add", "-l", "12"}, true},
        {{"ens", "lcore", "add", "-l", "13"}, false},  // over the maximum of 5
        {{"ens", "lcore", "switch", "add", "-l", "12", "-s", "nosuch"}, false},
        {{"ens", "lcore", "switch", "add", "-l", "14", "-s", "lanswitch0"}, false},
        {{"ens", "lcore", "switch", "add", "-l", "12", "-s", "storageswitch1"}, true},
        {{"ens", "lcore", "affinity", "set", "-l", "12", "-a", "2"}, false},  // 2 NUMA nodes
        {{"ens", "lcore", "affinity", "set", "-l", "12", "-a", "-2"}, false},
        {{"ens", "lcore", "affinity", "set", "-l", "14", "-a", "0"}, false},
        {{"ens", "lcore", "affinity", "set", "-l", "12", "-a", "1"}, true},
        {{"ens", "lcore", "remove", "-l", "12"}, false},  // still serves a switch
        {{"ens", "lcore", "remove", "-l", "14"}, false},
    };
    for (const Step& step : steps) {
        EXPECT_EQ(RunBool(step.words), step.answer) << ::testing::PrintToString(step.words);
    }
    EXPECT_EQ(RunInt({"ens", "maxLcores", "get"}), 5);
    EXPECT_EQ(Contexts(), (Words{"0:distswitch0:0", "1:distswitch0:1", "2:lanswitch0:0",
                                 "3:null:-1", "12:storageswitch1:1"}));

    EXPECT_TRUE(RunBool({"ens", "lcore", "switch", "remove", "-l", "12"}));
    EXPECT_EQ(RunString({"ens", "lcore", "switch", "get", "-l", "12"}), "null");
    EXPECT_TRUE(RunBool({"ens", "lcore", "remove", "-l", "12"}));
    EXPECT_TRUE(RunBool({"ens", "lcore", "switch", "add", "-l", "3", "-s", "distswitch0"}));
    EXPECT_EQ(Contexts(),
              (Words{"0:distswitch0:0", "1:distswitch0:1", "2:lanswitch0:0", "3:distswitch0:-1"}));
}

TEST_F(Ens, AnUnknownContextHasNoSwitchOrAffinity) {
    EXPECT_EQ(RunError({"ens", "lcore", "switch", "get", "-l", "9"}), "There is no ENS context 9");
    EXPECT_EQ(RunError({"ens", "lcore", "affinity", "get", "-l", "9"}),
              "There is no ENS context 9");
}

TEST_F(Ens, AHostWithoutContextsListsNone) {
    auto profile = Host();
    profile["ens"]["lcores"] = HostSim::Json::array();
    Load(profile);
    EXPECT_EQ(Contexts(), Words{});
    EXPECT_TRUE(RunBool({"ens", "maxLcores", "set", "-n", "0"}));
    EXPECT_FALSE(RunBool({"ens", "lcore", "add", "-l", "0"}));
}

}  // namespace
}  // namespace DvsTesting
