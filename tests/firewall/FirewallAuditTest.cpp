// The audit trail: what a record carries besides its event, object and outcome, and that a log
// that can't be written changes no result.
#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <regex>

#include "AuditLog.h"
#include "support/CommandTest.h"

namespace {

using FirewallTesting::AuditLines;
using FirewallTesting::AuditRecords;
using FirewallTesting::Items;
using FirewallTesting::Record;
using FirewallTesting::Success;

// Sets an environment variable for the life of the object, and restores it after.
class ScopedVariable {
public:
    ScopedVariable(const char* name, const char* value) : name_(name) {
        if (const char* old = std::getenv(name)) {
            old_ = old;
        }
        value != nullptr ? setenv(name, value, 1) : unsetenv(name);
    }
    ~ScopedVariable() { old_ ? setenv(name_, old_->c_str(), 1) : unsetenv(name_); }

private:
    const char* name_;
    std::optional<std::string> old_;
};

class FirewallAudit : public Testing::CommandTest {};

TEST_F(FirewallAudit, ARecordNamesTheUserTheTimeAndWhatItIsAbout) {
    ScopedVariable client("SSH_CLIENT", nullptr);
    ScopedVariable operation("HOSTSIM_OPID", nullptr);
    RunOk({"firewall", "refresh"});
    const auto lines = AuditLines(StateDirectory());
    ASSERT_EQ(lines.size(), 1u);
    const auto& line = lines[0];
    std::vector<std::string> keys;
    for (const auto& [key, value] : line.items()) {
        keys.push_back(key);
    }
    EXPECT_EQ(keys,
              (std::vector<std::string>{"event", "user", "object", "outcome", "items", "time"}));
    EXPECT_EQ(line["user"], getpwuid(geteuid())->pw_name);
    EXPECT_TRUE(std::regex_match(line["time"].get<std::string>(),
                                 std::regex(R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z)")))
        << line["time"];
    // With neither client address nor operation id known, a success has no items.
    EXPECT_EQ(AuditRecords(StateDirectory()),
              (std::vector<Record>{Success("network.fw.refresh", "firewall")}));
}

TEST_F(FirewallAudit, ClientAddressAndOperationIdFollowTheCallersItems) {
    ScopedVariable client("SSH_CLIENT", "198.51.100.20 52144 22");
    ScopedVariable operation("HOSTSIM_OPID", "kelm-op-4711");
    RunOk({"firewall", "ruleset", "set", "-r", "sshClient", "-e", "true"});
    EXPECT_EQ(RunError({"firewall", "ruleset", "set", "-r", "webAccess", "-a", "true"}),
              "Already allowed all ip");
    const auto records = AuditRecords(StateDirectory());
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(records[0].items, (Items{{"ip", "198.51.100.20"}, {"opID", "kelm-op-4711"}}));
    EXPECT_EQ(records[1].items, (Items{{"reason", "Already allowed all ip"},
                                       {"ip", "198.51.100.20"},
                                       {"opID", "kelm-op-4711"}}));
}

TEST_F(FirewallAudit, EachKnownItemComesAlone) {
    {
        ScopedVariable client("SSH_CLIENT", "2001:db8::20 52144 22");
        ScopedVariable operation("HOSTSIM_OPID", nullptr);
        RunOk({"firewall", "refresh"});
    }
    {
        ScopedVariable client("SSH_CLIENT", nullptr);
        ScopedVariable operation("HOSTSIM_OPID", "kelm-op-4712");
        RunOk({"firewall", "refresh"});
    }
    const auto records = AuditRecords(StateDirectory());
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(records[0].items, (Items{{"ip", "2001:db8::20"}}));
    EXPECT_EQ(records[1].items, (Items{{"opID", "kelm-op-4712"}}));
}

TEST_F(FirewallAudit, TextIsKeptExactlyWithinOneLine) {
    HostSim::InjectFault("SystemInfo::LoadFirewallRulesets", "",
                         "rule \"ssh\"\nline 2 \\ tab\t\xC3\xA9");
    RunError({"firewall", "refresh"});
    const auto records = AuditRecords(StateDirectory());
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(records[0].items, (Items{{"reason", "rule \"ssh\"\nline 2 \\ tab\t\xC3\xA9"}}));
}

TEST_F(FirewallAudit, ALogThatCannotBeWrittenChangesNoResult) {
    std::filesystem::create_directories(StateDirectory() + "/audit.log");
    RunOk({"firewall", "refresh"});
    RunOk({"firewall", "set", "--enabled=false"});
    EXPECT_EQ(RunError({"firewall", "ruleset", "set", "-r", "webAccess", "-a", "true"}),
              "Already allowed all ip");
}

}  // namespace
