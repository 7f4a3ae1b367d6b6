// The firewall as a profile makes it: an empty host, and sections the host refuses.
#include <fstream>

#include "support/CommandTest.h"

namespace {

using Testing::Bool;
using Testing::Rows;
using Testing::Str;

class FirewallProfile : public Testing::CommandTest {
protected:
    // Imports `profile` with the hostsim tool; returns its exit status and what it said.
    Testing::ProcessResult Import(const std::string& profile) {
        const std::string file = StateDirectory() + "/profile.json";
        std::ofstream(file) << profile;
        return Testing::RunHostsim({"import", file}, StateDirectory());
    }

    // The host's message for a profile the tool refuses.
    std::string ImportError(const std::string& profile) {
        constexpr std::string_view kTool = "hostsim: ";
        const auto result = Import(profile);
        EXPECT_EQ(result.status, 1) << profile;
        if (!result.err.starts_with(kTool) || !result.err.ends_with('\n')) {
            ADD_FAILURE() << result.err;
            return result.err;
        }
        return result.err.substr(kTool.size(), result.err.size() - kTool.size() - 1);
    }
};

TEST_F(FirewallProfile, AnEmptyHostHasAnUnloadedFirewallThatCanBeLoaded) {
    ASSERT_EQ(Import("{}").status, 0);
    auto firewall = RunStruct({"firewall", "get"});
    EXPECT_FALSE(Bool(firewall, "Loaded"));
    EXPECT_EQ(Str(firewall, "DefaultAction"), "PASS");
    EXPECT_TRUE(Rows(RunList({"firewall", "ruleset", "list"})).empty());
    RunOk({"firewall", "load"});
    firewall = RunStruct({"firewall", "get"});
    EXPECT_TRUE(Bool(firewall, "Loaded"));
    EXPECT_TRUE(Bool(firewall, "Enabled"));
    EXPECT_EQ(Str(firewall, "DefaultAction"), "DROP");
}

TEST_F(FirewallProfile, ASectionTheHostCantTakeIsRefusedByName) {
    EXPECT_EQ(ImportError(R"({"firewall": {"rulesets": [
        {"id": "sshServer", "allowedAll": false, "allowedIps": ["192.0.2.256"]}]}})"),
              "Invalid address '192.0.2.256': expected an IPv4 or IPv6 address, or a network in "
              "prefix form such as 192.0.2.0/24");
    EXPECT_EQ(ImportError(R"({"firewall": {"rulesets": [{"id": "dns"}, {"id": "dns"}]}})"),
              "Duplicate firewall ruleset id dns");
    EXPECT_EQ(ImportError(R"({"firewall": {"rulesets": [{"id": "dns", "rules": [
        {"direction": "sideways", "protocol": "udp", "port": "dst", "begin": 53, "end": 53}]}]}})"),
              "A rule's \"direction\" is \"inbound\" or \"outbound\", not \"sideways\"");
    EXPECT_EQ(ImportError(R"({"firewall": {"rulesets": [{"id": "dns", "rules": [
        {"direction": "inbound", "protocol": "udp", "port": "dst", "begin": 53, "end": 52}]}]}})"),
              "Rule ports of ruleset dns must be 0 <= begin <= end <= 65535");
    EXPECT_EQ(ImportError(R"({"firewall": {"defaultAction": "REJECT"}})"),
              "The firewall's \"defaultAction\" is \"PASS\" or \"DROP\", not \"REJECT\"");
    // The host is left as it was.
    EXPECT_EQ(Rows(RunList({"firewall", "ruleset", "list"})).size(), 12u);
}

}  // namespace
