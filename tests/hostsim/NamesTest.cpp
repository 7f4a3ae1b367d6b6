// The host's rule for the names it stores, wherever a name comes from: a command or any
// subject's section of a profile. A name a table can't show on one line is refused.
#include <fstream>

#include "HostSimTest.h"
#include "hostctl/HostCtlException.h"

namespace HostSimTesting {
namespace {

using ::testing::HasSubstr;

struct BadName {
    const char* label;
    std::string name;
    const char* commandProblem;  // the end of the host's sentence
    const char* profileProblem;  // null: left to the subject's own rules (some names may be empty)
};

const std::vector<BadName> kBadNames{
    {.label = "newline",
     .name = "lab\nswitch",
     .commandProblem = "must not hold control characters",
     .profileProblem = "holds control characters"},
    {.label = "tab",
     .name = "lab\tswitch",
     .commandProblem = "must not hold control characters",
     .profileProblem = "holds control characters"},
    {.label = "only blanks",
     .name = "   ",
     .commandProblem = "must not be only blanks",
     .profileProblem = "is only blanks"},
    {.label = "empty",
     .name = "",
     .commandProblem = "must not be empty",
     .profileProblem = nullptr},
};

class Names : public Testing::CommandTest {
protected:
    std::vector<std::string> Listed(const std::vector<std::string>& words,
                                    const std::string& field) {
        std::vector<std::string> names;
        for (const auto& row : Testing::Rows(RunList(words))) {
            names.push_back(Testing::Str(row, field));
        }
        return names;
    }
};

TEST_F(Names, CommandsRefuseNamesATableCantShow) {
    auto switches = Listed({"vswitch", "standard", "list"}, "Name");
    auto portGroups = Listed({"vswitch", "standard", "portgroup", "list"}, "Name");
    for (const BadName& bad : kBadNames) {
        SCOPED_TRACE(bad.label);
        EXPECT_EQ(RunError({"vswitch", "standard", "add", "-v", bad.name}),
                  std::string("A virtual switch name ") + bad.commandProblem);
        EXPECT_EQ(RunError({"vswitch", "standard", "portgroup", "add", "-p", bad.name, "-v",
                            "lanswitch0"}),
                  std::string("A port group name ") + bad.commandProblem);
    }
    EXPECT_EQ(Listed({"vswitch", "standard", "list"}, "Name"), switches);
    EXPECT_EQ(Listed({"vswitch", "standard", "portgroup", "list"}, "Name"), portGroups);
}

// Every "name" of every section is checked, at any depth, before anything is imported.
TEST_F(Names, AProfileWithANameATableCantShowIsRefused) {
    auto profileWith = [](const std::string& switchName, const std::string& portGroupName,
                          const std::string& nicName) {
        return HostSim::Json{{"nics", {PciNic("hwnic0", PciMac(1)), PciNic(nicName, PciMac(2))}},
                             {"vswitches",
                              {{{"name", switchName},
                                {"uplinks", HostSim::Json::array()},
                                {"portGroups", {{{"name", "Lab"}}, {{"name", portGroupName}}}}}}}};
    };
    HostSim::ImportProfile(profileWith("labswitch0", "Lab 2", "hwnic1").dump());
    for (const BadName& bad : kBadNames) {
        if (bad.profileProblem == nullptr) {
            continue;
        }
        SCOPED_TRACE(bad.label);
        const std::vector<std::pair<HostSim::Json, std::string>> cases{
            {profileWith(bad.name, "Lab 2", "hwnic1"),
             "Section \"vswitches\" of the profile is not valid: the name of vswitches[0] "},
            {profileWith("labswitch0", bad.name, "hwnic1"),
             "Section \"vswitches\" of the profile is not valid: the name of "
             "vswitches[0].portGroups[1] "},
            {profileWith("labswitch0", "Lab 2", bad.name),
             "Section \"nics\" of the profile is not valid: the name of nics[1] "},
        };
        for (const auto& [profile, words] : cases) {
            try {
                HostSim::ImportProfile(profile.dump());
                ADD_FAILURE() << "imported " << profile;
            } catch (const HostCtl::Lib::HostCtlException& error) {
                EXPECT_EQ(error.what(), words + bad.profileProblem);
            }
        }
    }
    EXPECT_EQ(Listed({"vswitch", "standard", "portgroup", "list"}, "Name"),
              (std::vector<std::string>{"Lab", "Lab 2"}));
}

// A profile entry the host can't take is named, with what it lacks or has wrong.
TEST_F(Names, AProfileErrorNamesTheEntryAndTheField) {
    auto noDriver = PciNic("hwnic1", PciMac(2));
    noDriver.erase("driver");
    auto textSpeed = PciNic("hwnic2", PciMac(3));
    textSpeed["speed"] = "fast";
    const std::vector<std::pair<HostSim::Json, std::string>> cases{
        {{{"nics", {PciNic("hwnic0", PciMac(1)), noDriver}}},
         "Section \"nics\" of the profile is not valid: nics[1] (\"hwnic1\") has no field "
         "\"driver\""},
        {{{"nics", {textSpeed}}},
         "Section \"nics\" of the profile is not valid: nics[0].speed (in \"hwnic2\"): type must "
         "be number, but is string"},
        {{{"vswitches", {{{"name", "labswitch0"}, {"portGroups", {{{"vlanId", 3}}}}}}}},
         "Section \"vswitches\" of the profile is not valid: vswitches[0].portGroups[0] (in "
         "\"labswitch0\") has no field \"name\""},
    };
    for (const auto& [profile, message] : cases) {
        const std::string path = StateDirectory() + "/p.json";
        std::ofstream(path) << profile.dump();
        auto result = Testing::RunHostsim({"init", "--profile=" + path}, StateDirectory());
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.err, "hostsim: " + message + "\n");
    }
}

}  // namespace
}  // namespace HostSimTesting
