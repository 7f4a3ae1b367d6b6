// Netstack instances: what list and get show, the refusals of add, remove and set, and an
// instance's life from configuration to kernel.
#include "hostsim/Control.h"
#include "hostsim/core/Profile.h"
#include "hostsim/core/Store.h"
#include "support/CommandTest.h"

namespace {

using Words = std::vector<std::string>;

class Netstack : public Testing::CommandTest {
protected:
    std::shared_ptr<CppTools::MetaObj::MetaStruct> Get(const std::string& key) {
        const auto rows = Testing::Rows(RunList({"ip", "netstack", "get", "-N", key}));
        EXPECT_EQ(rows.size(), 1u);
        return rows.empty() ? nullptr : rows.front();
    }
    Words Keys() {
        Words keys;
        for (const auto& row : Testing::Rows(RunList({"ip", "netstack", "list"}))) {
            keys.push_back(Testing::Str(row, "Key"));
        }
        return keys;
    }
    // The message of a refused run, which must start with `prefix` and go on with the host's
    // reason.
    void ExpectRefusal(const Words& line, const std::string& prefix, const std::string& reason) {
        SCOPED_TRACE(::testing::PrintToString(line));
        EXPECT_EQ(RunError(line), prefix + reason);
    }
};

TEST_F(Netstack, ListAndGetShowTheDefaultInstances) {
    const auto list = RunList({"ip", "netstack", "list"});
    EXPECT_EQ(Keys(), (Words{"defaultTcpipStack", "glidex"}));
    EXPECT_EQ(Testing::Int(Testing::RowWhere(list, "Key", "glidex"), "State"), 4660);
    EXPECT_EQ(Testing::Str(Testing::RowWhere(list, "Key", "glidex"), "Name"), "glidex");

    struct Field {
        std::string key;
        std::string field;
        std::string value;
    };
    for (const auto& field : std::vector<Field>{
             {"defaultTcpipStack", "Congestion Control Algorithm", "newreno"},
             {"defaultTcpipStack", "ECN Status", "enabled"},
             {"glidex", "Name", "glidex"},
             {"glidex", "Congestion Control Algorithm", "cubic"},
             {"glidex", "ECN Status", "echo-only"},
         }) {
        SCOPED_TRACE(field.key + " " + field.field);
        EXPECT_EQ(Testing::Str(Get(field.key), field.field), field.value);
    }
    const auto glidex = Get("glidex");
    EXPECT_TRUE(Testing::Bool(glidex, "Enabled"));
    EXPECT_EQ(Testing::Int(glidex, "Max Connections"), 11000);
    EXPECT_EQ(Testing::Int(glidex, "Current Max Connections"), 11000);
    EXPECT_TRUE(Testing::Bool(glidex, "IPv6 Enabled"));
    EXPECT_TRUE(Testing::Bool(glidex, "Current IPv6 Enabled"));
    EXPECT_EQ(Testing::Int(glidex, "State"), 4660);
}

TEST_F(Netstack, Refusals) {
    EXPECT_EQ(RunError({"ip", "netstack", "get", "-N", "nosuchstack"}),
              "Unable to find a Netstack instance nosuchstack");
    EXPECT_EQ(RunError({"ip", "netstack", "set", "-N", "nosuchstack", "-m", "5000"}),
              "Unable to find a Netstack instance nosuchstack");
    const std::string add = "Unable to add Netstack Instance. Error was : ";
    const std::string remove = "Unable to Remove Netstack Instance. Error was : ";
    for (const Words& line : std::vector<Words>{
             {"ip", "netstack", "add", "-N", "glidex"},
             {"ip", "netstack", "add", "-N", ""},
             {"ip", "netstack", "remove", "-N", "defaultTcpipStack"},
             {"ip", "netstack", "remove", "-N", "glidex"},
             {"ip", "netstack", "remove", "-N", "nosuchstack"},
         }) {
        SCOPED_TRACE(::testing::PrintToString(line));
        const std::string message = RunError(line);
        const std::string& prefix = line[2] == "add" ? add : remove;
        EXPECT_EQ(message.rfind(prefix, 0), 0u) << message;
        EXPECT_GT(message.size(), prefix.size() + 10) << message;
    }
    // The default instance can't be disabled; kelm1 keeps glidex up.
    for (const char* key : {"defaultTcpipStack", "glidex"}) {
        const std::string message = RunError({"ip", "netstack", "set", "-N", key, "-e", "false"});
        EXPECT_EQ(message.rfind("Error setting configuration", 0), 0u) << message;
        EXPECT_TRUE(Testing::Bool(Get(key), "Enabled")) << key;
    }
    EXPECT_EQ(Keys(), (Words{"defaultTcpipStack", "glidex"}));
}

TEST_F(Netstack, AnInstanceFromConfigurationToKernel) {
    RunOk({"ip", "netstack", "add", "-N", "mirrorlock", "--disabled"});
    auto row = Get("mirrorlock");
    EXPECT_FALSE(Testing::Bool(row, "Enabled"));
    EXPECT_NE(Testing::Int(row, "State"), 4660);
    EXPECT_EQ(Keys(), (Words{"defaultTcpipStack", "glidex", "mirrorlock"}));

    RunOk({"ip", "netstack", "set", "-N", "mirrorlock", "--enable=true", "-n", "Mirror Lock",
           "--ecn", "disabled", "-c", "cubic"});
    row = Get("mirrorlock");
    EXPECT_TRUE(Testing::Bool(row, "Enabled"));
    EXPECT_EQ(Testing::Int(row, "State"), 4660);
    EXPECT_EQ(Testing::Str(row, "Name"), "Mirror Lock");
    EXPECT_EQ(Testing::Str(row, "ECN Status"), "disabled");
    EXPECT_EQ(Testing::Str(row, "Congestion Control Algorithm"), "cubic");
    const long current = Testing::Int(row, "Current Max Connections");

    // A new maximum is configured at once and taken by the kernel when the instance is made
    // again.
    RunOk({"ip", "netstack", "set", "-N", "mirrorlock", "-m", "20000"});
    row = Get("mirrorlock");
    EXPECT_EQ(Testing::Int(row, "Max Connections"), 20000);
    EXPECT_EQ(Testing::Int(row, "Current Max Connections"), current);
    RunOk({"ip", "netstack", "set", "-N", "mirrorlock", "-e", "false"});
    RunOk({"ip", "netstack", "set", "-N", "mirrorlock", "-e", "true"});
    EXPECT_EQ(Testing::Int(Get("mirrorlock"), "Current Max Connections"), 20000);

    // Its resolver goes with it: the host still exports a profile it can take, and an instance
    // made again under the key starts empty.
    RunOk({"ip", "dns", "server", "add", "-s", "198.51.100.53", "-N", "mirrorlock"});
    RunOk({"ip", "netstack", "remove", "-N", "mirrorlock"});
    EXPECT_EQ(Keys(), (Words{"defaultTcpipStack", "glidex"}));
    const std::string exported = HostSim::ExportHost(HostSim::Store()).dump();
    EXPECT_NO_THROW(HostSim::ImportProfile(exported));
    RunOk({"ip", "netstack", "add", "-N", "mirrorlock"});
    EXPECT_TRUE(Testing::Strings(RunStruct({"ip", "dns", "server", "list", "-N", "mirrorlock"}),
                                 "DNS Servers")
                    .empty());
}

TEST_F(Netstack, AnInstanceInUseStays) {
    RunOk({"ip", "netstack", "add", "-N", "labstack1"});
    RunOk({"vswitch", "standard", "portgroup", "add", "-v", "lanswitch0", "-p", "Lab Network"});
    RunOk({"ip", "interface", "add", "-p", "Lab Network", "-N", "labstack1", "-i", "kelm5"});
    const std::string message = RunError({"ip", "netstack", "remove", "-N", "labstack1"});
    EXPECT_EQ(message.rfind("Unable to Remove Netstack Instance. Error was : ", 0), 0u) << message;
    RunOk({"ip", "interface", "remove", "-i", "kelm5"});
    RunOk({"ip", "netstack", "remove", "-N", "labstack1"});
    EXPECT_EQ(Keys(), (Words{"defaultTcpipStack", "glidex"}));
}

}  // namespace
