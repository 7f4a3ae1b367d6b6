// The allowed address lists of rulesets: listing, adding and removing, and their records.
#include <algorithm>

#include "AuditLog.h"

namespace {

using FirewallTesting::Failure;
using FirewallTesting::Record;
using FirewallTesting::Success;
using Testing::Rows;
using Testing::RowWhere;
using Testing::Str;
using Testing::Strings;
using Strings_t = std::vector<std::string>;

constexpr char kUpdate[] = "network.fw.rule.update";

class FirewallAllowedIps : public FirewallTesting::AuditedCommandTest {
protected:
    Strings_t AllowedIps(const std::string& id) {
        auto rows = Rows(RunList({"firewall", "ruleset", "allowedip", "list", "-r", id}));
        EXPECT_EQ(rows.size(), 1u);
        return rows.size() == 1 ? Strings(rows[0], "Allowed IP Addresses") : Strings_t{};
    }

    void Add(const std::string& id, const std::string& address) {
        RunOk({"firewall", "ruleset", "allowedip", "add", "-r", id, "-i", address});
    }
    std::string AddError(const std::string& id, const std::string& address) {
        return RunError({"firewall", "ruleset", "allowedip", "add", "-r", id, "-i", address});
    }
};

TEST_F(FirewallAllowedIps, ListShowsAllOrTheAddressesBeforeTheNetworks) {
    auto rows = RunList({"firewall", "ruleset", "allowedip", "list"});
    EXPECT_EQ(Rows(rows).size(), 12u);
    EXPECT_EQ(Strings(RowWhere(rows, "Ruleset", "sshServer"), "Allowed IP Addresses"),
              (Strings_t{"198.51.100.7", "2001:db8::7", "192.0.2.0/24", "2001:db8:100::/48"}));
    EXPECT_EQ(Strings(RowWhere(rows, "Ruleset", "webAccess"), "Allowed IP Addresses"),
              (Strings_t{"All"}));
    EXPECT_EQ(Strings(RowWhere(rows, "Ruleset", "snmp"), "Allowed IP Addresses"), Strings_t{});
}

TEST_F(FirewallAllowedIps, AllowedAllRulesetIsNotAskedForItsList) {
    HostSim::InjectFault("FirewallRuleset::GetAllowedIpList", "webAccess", "must not be asked");
    EXPECT_EQ(AllowedIps("webAccess"), (Strings_t{"All"}));
}

TEST_F(FirewallAllowedIps, AddedAndRemovedAddressesShowAndEachChangeIsAudited) {
    Add("snmp", "203.0.113.0/24");
    Add("snmp", "2001:DB8:0::10");
    Add("snmp", "198.51.100.9");
    EXPECT_EQ(AllowedIps("snmp"), (Strings_t{"198.51.100.9", "2001:db8::10", "203.0.113.0/24"}));
    // The host knows the address in any of its text forms.
    RunOk({"firewall", "ruleset", "allowedip", "remove", "-r", "snmp", "-i", "2001:db8::0010"});
    RunOk({"firewall", "ruleset", "allowedip", "remove", "-r", "snmp", "-i", "203.0.113.0/24"});
    EXPECT_EQ(AllowedIps("snmp"), (Strings_t{"198.51.100.9"}));
    EXPECT_EQ(Records(), std::vector<Record>(5, Success(kUpdate, "snmp")));
}

TEST_F(FirewallAllowedIps, TheHostRefusesWhatIsNoAddressAndNothingChanges) {
    const std::vector<std::pair<std::string, std::string>> refused = {
        {"192.0.2.300",
         "Invalid address '192.0.2.300': expected an IPv4 or IPv6 address, or a network in "
         "prefix form such as 192.0.2.0/24"},
        {"ostrel.example",
         "Invalid address 'ostrel.example': expected an IPv4 or IPv6 address, or a network in "
         "prefix form such as 192.0.2.0/24"},
        {"192.0.2.0/33",
         "Invalid address '192.0.2.0/33': expected an IPv4 or IPv6 address, or a network in "
         "prefix form such as 192.0.2.0/24"},
        {"2001:db8::/129",
         "Invalid address '2001:db8::/129': expected an IPv4 or IPv6 address, or a network in "
         "prefix form such as 192.0.2.0/24"},
        {"192.0.2.5/24",
         "Invalid network '192.0.2.5/24': bits are set beyond the /24 prefix, the network is "
         "192.0.2.0/24"},
        {"2001:db8::7/32",
         "Invalid network '2001:db8::7/32': bits are set beyond the /32 prefix, the network is "
         "2001:db8::/32"},
        {"198.51.100.7", "198.51.100.7 is already an allowed address of ruleset sshServer"},
        {"192.0.2.0/24", "192.0.2.0/24 is already an allowed address of ruleset sshServer"},
    };
    std::vector<Record> expected;
    for (const auto& [address, message] : refused) {
        EXPECT_EQ(AddError("sshServer", address), message);
        expected.push_back(Failure(kUpdate, "sshServer", message));
    }
    const std::string missing = "203.0.113.9 is not an allowed address of ruleset sshServer";
    EXPECT_EQ(RunError({"firewall", "ruleset", "allowedip", "remove", "-r", "sshServer", "-i",
                        "203.0.113.9"}),
              missing);
    expected.push_back(Failure(kUpdate, "sshServer", missing));
    EXPECT_EQ(AllowedIps("sshServer"),
              (Strings_t{"198.51.100.7", "2001:db8::7", "192.0.2.0/24", "2001:db8:100::/48"}));
    EXPECT_EQ(Records(), expected);
}

TEST_F(FirewallAllowedIps, AllowedAllRulesetRefusesWithoutRecord) {
    EXPECT_EQ(AddError("webAccess", "192.0.2.1"),
              "Couldn't update allowed ip list when allowed-all flag is true.");
    EXPECT_EQ(RunError({"firewall", "ruleset", "allowedip", "remove", "-r", "webAccess", "-i",
                        "192.0.2.1"}),
              "Couldn't update allowed ip list when allowed-all flag is true.");
    EXPECT_TRUE(Records().empty());
}

TEST_F(FirewallAllowedIps, EmptyAddressIsRefusedAndAuditedOnlyForAKnownRuleset) {
    HostSim::StartTrace();
    EXPECT_EQ(AddError("snmp", ""), "Invalid allowedip parameter.");
    const auto calls = HostSim::StopTrace();
    EXPECT_TRUE(std::none_of(calls.begin(), calls.end(), [](const HostSim::OperationCall& call) {
        return call.operation == "FirewallRuleset::AddAllowedIp";
    }));
    EXPECT_EQ(AddError("nfsServer", ""), "Invalid Ruleset Id.");
    EXPECT_EQ(Records(),
              (std::vector<Record>{Failure(kUpdate, "snmp", "Invalid allowedip parameter.")}));
}

TEST_F(FirewallAllowedIps, AFailedLookUpIsAudited) {
    HostSim::InjectFault("SystemInfo::GetFirewallRulesetById", "", "ruleset store locked");
    EXPECT_EQ(AddError("snmp", "192.0.2.1"), "ruleset store locked");
    EXPECT_EQ(Records(), (std::vector<Record>{Failure(kUpdate, "snmp", "ruleset store locked")}));
}

TEST_F(FirewallAllowedIps, AFixedListIsRefusedByTheHost) {
    const std::string fixed =
        "The allowed IP settings of ruleset dns are fixed and cannot be changed";
    EXPECT_EQ(AddError("dns", "192.0.2.53"), fixed);
    EXPECT_EQ(AllowedIps("dns"), (Strings_t{"198.51.100.53", "2001:db8::53"}));
    EXPECT_EQ(Records(), (std::vector<Record>{Failure(kUpdate, "dns", fixed)}));
}

}  // namespace
