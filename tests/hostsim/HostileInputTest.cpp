// Hostile input through the in-process entry points: commands and profiles that try to store
// text that is no UTF-8 or holds control characters, numbers the host would cut or wrap,
// values outside their set, duplicates, and nesting deeper than any profile. Each is refused
// in the host's own words, as a HostCtlException (status 1 through the command's handler), and
// leaves the host exactly as it was; export never fails.
#include "HostSimTest.h"
#include "hostctl/HostCtlException.h"
#include "hostsim/core/Profile.h"
#include "hostsim/core/Store.h"

namespace HostSimTesting {
namespace {

using HostSim::Json;
using Words = std::vector<std::string>;

class HostileInput : public Testing::CommandTest {
protected:
    // The whole host, as `hostsim export` writes it.
    std::string Exported() { return HostSim::ExportHost(HostSim::Store()).dump(1); }
};

const std::string kNotUtf8 = "lab\xff\xfe";
const std::string kSurrogate = "lab\xed\xa0\x80";
const std::string kC1 =
    "lab\xc2\x9b"
    "2J";
const std::string kEscape = "lab\x1b[2J";

struct HostileCommand {
    const char* label;
    Words words;
    std::string error;
};

// Each text the commands hand to the host to keep, in each hostile form.
std::vector<HostileCommand> HostileCommands() {
    std::vector<HostileCommand> cases;
    const std::vector<std::pair<std::string, std::string>> texts{
        {kNotUtf8, "must be valid UTF-8"},
        {kSurrogate, "must be valid UTF-8"},
        {kC1, "must not hold control characters"},
        {kEscape, "must not hold control characters"},
    };
    for (const auto& [text, problem] : texts) {
        cases.push_back({"switch name",
                         {"vswitch", "standard", "add", "-v", text},
                         "A virtual switch name " + problem});
        cases.push_back(
            {"port group name",
             {"vswitch", "standard", "portgroup", "add", "-p", text, "-v", "lanswitch0"},
             "A port group name " + problem});
        cases.push_back({"netstack key",
                         {"ip", "netstack", "add", "-N", text},
                         "A netstack instance name " + problem});
        cases.push_back({"netstack name",
                         {"ip", "netstack", "set", "-N", "glidex", "-n", text},
                         "A netstack instance name " + problem});
        cases.push_back(
            {"hosts comment",
             {"ip", "hosts", "add", "-I", "203.0.113.7", "-H", "backup.example.net", "-C", text},
             "Error adding etc host item:The hosts file comment " + problem});
        cases.push_back(
            {"security association name",
             {"ip", "ipsec", "sa", "add", "-n", text, "-s", "2001:db8:0:1::10", "-d",
              "2001:db8:0:1::99", "-p", "0x99", "-e", "null", "-i", "hmac-sha1", "-K", "key"},
             "A security association name " + problem});
        cases.push_back(
            {"integrity key",
             {"ip", "ipsec", "sa", "add", "-n", "sa9", "-s", "2001:db8:0:1::10", "-d",
              "2001:db8:0:1::99", "-p", "0x99", "-e", "null", "-i", "hmac-sha1", "-K", text},
             "The integrity key " + problem});
        cases.push_back({"security policy name",
                         {"ip", "ipsec", "sp", "add", "-n", text, "-s", "any", "-d", "any", "-p",
                          "0", "-P", "0", "-A", "discard", "-w", "in"},
                         "A security policy name " + problem});
    }
    return cases;
}

TEST_F(HostileInput, CommandsRefuseTextTheHostCantStore) {
    const std::string before = Exported();
    for (const HostileCommand& hostile : HostileCommands()) {
        SCOPED_TRACE(hostile.label);
        auto result = Run(hostile.words);
        EXPECT_EQ(result.status, CommandHost::ExitCommandError);
        ASSERT_TRUE(result.output);
        EXPECT_THAT(result.output->GetErrorMessages(),
                    ::testing::ElementsAre(::testing::HasSubstr(hostile.error)));
    }
    EXPECT_EQ(Exported(), before);
}

// The default host with one change.
struct HostileProfile {
    const char* label;
    std::function<void(Json&)> change;
    std::string error;
};

Json& At(Json& profile, const std::string& pointer) {
    return profile[Json::json_pointer(pointer)];
}

// The first two interfaces of the default netstack with a static IPv4 address.
std::pair<std::string, std::string> TwoStaticInterfaces(const Json& profile) {
    std::vector<std::string> found;
    for (size_t i = 0; i < profile["kelmnics"].size(); ++i) {
        const Json& nic = profile["kelmnics"][i];
        const Json& ipv4 = nic["ipConfig"]["ipv4"];
        if (nic.value("netstack", "defaultTcpipStack") == "defaultTcpipStack" &&
            ipv4.contains("address") && !ipv4.value("dhcp", false)) {
            found.push_back("/kelmnics/" + std::to_string(i));
        }
    }
    EXPECT_GE(found.size(), 2u);
    return {found.at(0), found.at(1)};
}

const std::vector<HostileProfile> kHostileProfiles{
    {"fraction", [](Json& p) { At(p, "/nics/0/mtu") = 1500.7; },
     "Section \"nics\" of the profile is not valid: nics[0].mtu (in \"hwnic0\"): 1500.7 is not "
     "a whole number from 0 to 4294967295"},
    {"wraps to 32 bits", [](Json& p) { At(p, "/nics/0/mtu") = 4294968796ULL; },
     "Section \"nics\" of the profile is not valid: nics[0].mtu (in \"hwnic0\"): 4294968796 is "
     "not a whole number from 0 to 4294967295"},
    {"negative", [](Json& p) { At(p, "/nics/0/mtu") = -1; },
     "Section \"nics\" of the profile is not valid: nics[0].mtu (in \"hwnic0\"): -1 is not a "
     "whole number from 0 to 4294967295"},
    {"exponent", [](Json& p) { At(p, "/nics/0/mtu") = 1e30; },
     "Section \"nics\" of the profile is not valid: nics[0].mtu (in \"hwnic0\"): 1e+30 is not a "
     "whole number from 0 to 4294967295"},
    {"VLAN wraps", [](Json& p) { At(p, "/vswitches/0/portGroups/0/vlanId") = 4294967301ULL; },
     "Section \"vswitches\" of the profile is not valid: vswitches[0].portGroups[0].vlanId (in "
     "\"Management Network\"): 4294967301 is not a whole number from -2147483648 to "
     "2147483647"},
    {"duplex outside its set", [](Json& p) { At(p, "/nics/0/duplex") = 7; },
     "NIC hwnic0 has duplex 7, which is 1 (full) or 2 (half)"},
    {"hosts entry twice",
     [](Json& p) { At(p, "/nameService/hosts").push_back(At(p, "/nameService/hosts/0")); },
     "The hosts file already maps 192.0.2.31 to console.mgmt.example.com"},
    {"DNS server twice",
     [](Json& p) {
         At(p, "/nameService/dns/0/servers").push_back(At(p, "/nameService/dns/0/servers/0"));
     },
     "DNS server 192.0.2.53 is already in the list of netstack defaultTcpipStack"},
    {"search domain twice",
     [](Json& p) {
         At(p, "/nameService/dns/0/searchDomains")
             .push_back(At(p, "/nameService/dns/0/searchDomains/0"));
     },
     "Search domain mgmt.example.com is already in the search list of netstack "
     "defaultTcpipStack"},
    {"one static address on two interfaces",
     [](Json& p) {
         const auto [first, second] = TwoStaticInterfaces(p);
         At(p, second + "/ipConfig/ipv4/address") = At(p, first + "/ipConfig/ipv4/address");
         At(p, second + "/ipConfig/ipv4/netmask") = At(p, first + "/ipConfig/ipv4/netmask");
         At(p, second).erase("configuredIpConfig");
     },
     "IPv4 address 192.0.2.10 is in use by kelm0 in netstack defaultTcpipStack"},
    {"one MAC address on two NICs", [](Json& p) { At(p, "/nics/1/mac") = At(p, "/nics/0/mac"); },
     "to more than one NIC"},
    {"driver with an escape", [](Json& p) { At(p, "/nics/0/driver") = kEscape; },
     "Section \"nics\" of the profile is not valid: nics[0].driver (in \"hwnic0\") holds control "
     "characters"},
    {"vendor with a C1 control", [](Json& p) { At(p, "/nics/0/pci/vendor") = kC1; },
     "Section \"nics\" of the profile is not valid: nics[0].pci.vendor (in \"hwnic0\") holds "
     "control characters"},
    {"hosts comment with a line feed",
     [](Json& p) { At(p, "/nameService/hosts/0/comment") = "line\nforged"; },
     "Section \"nameService\" of the profile is not valid: nameService.hosts[0].comment holds "
     "control characters"},
    {"ruleset id with a bell", [](Json& p) { At(p, "/firewall/rulesets/0/id") = "ssh\a"; },
     "Section \"firewall\" of the profile is not valid: firewall.rulesets[0].id holds control "
     "characters"},
    {"member name with a control", [](Json& p) { At(p, "/nics/0")["mtu\x01"] = 1; },
     "Section \"nics\" of the profile is not valid: a member name in nics[0] (\"hwnic0\") holds "
     "control characters"},
};

TEST_F(HostileInput, ProfilesTakeOnlyWhatTheCommandsWouldTake) {
    const std::string before = Exported();
    for (const HostileProfile& hostile : kHostileProfiles) {
        SCOPED_TRACE(hostile.label);
        Json profile = HostSim::BuiltinProfile("default");
        hostile.change(profile);
        try {
            HostSim::ImportProfile(profile.dump());
            ADD_FAILURE() << "imported";
        } catch (const HostCtl::Lib::HostCtlException& error) {
            EXPECT_THAT(error.what(), ::testing::EndsWith(hostile.error));
        }
    }
    EXPECT_EQ(Exported(), before);
}

TEST_F(HostileInput, ProfileTextThatIsNoProfileIsRefusedAtOnce) {
    const std::string before = Exported();
    const struct {
        const char* label;
        std::string text;
        std::string error;
    } cases[] = {
        // 40 KB nested 20,000 deep: refused where the parser meets depth 16.
        {"nested 20,000 deep", std::string(20000, '[') + std::string(20000, ']'),
         "The profile nests its values more than 16 deep, deeper than any section of a profile"},
        {"nested in a section", "{\"nics\": " + std::string(17, '[') + std::string(17, ']') + "}",
         "The profile nests its values more than 16 deep, deeper than any section of a profile"},
        {"not UTF-8", "{\"nics\": [{\"name\": \"hw\xff\"}]}", "The profile is not valid JSON: "},
        {"a number no type holds", "{\"nics\": [{\"mtu\": 1e400}]}",
         "The profile is not valid JSON: "},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.label);
        try {
            HostSim::ImportProfile(c.text);
            ADD_FAILURE() << "imported";
        } catch (const HostCtl::Lib::HostCtlException& error) {
            EXPECT_THAT(error.what(), ::testing::StartsWith(c.error));
        }
    }
    EXPECT_EQ(Exported(), before);
}

}  // namespace
}  // namespace HostSimTesting
