// Every switching command through the real autocli binary: stdout, stderr, exit status, and
// what a later process sees.
#include <nlohmann/json.hpp>

#include <future>
#include <set>

#include "support/CommandTest.h"

namespace {

using nlohmann::json;
using Testing::ProcessResult;
using Words = std::vector<std::string>;

class AutocliVswitch : public ::testing::Test {
protected:
    ProcessResult Autocli(Words words, const std::map<std::string, std::string>& environment = {},
                          const std::string& formatter = {}) {
        words.insert(words.begin(), {"network", "vswitch", "standard"});
        if (!formatter.empty()) {
            words.insert(words.begin(), "--formatter=" + formatter);
        }
        return Testing::RunAutocli(words, state_.Path(), environment);
    }

    json Json(const Words& words) {
        auto result = Autocli(words, {}, "json");
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(result.err, "");
        return json::parse(result.out, nullptr, false);
    }

    // A change that answers true: exit 0 and nothing printed.
    void Quiet(const Words& words) {
        auto result = Autocli(words);
        EXPECT_EQ(result.status, 0) << ::testing::PrintToString(words) << result.err;
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err, "");
    }

    // A command that reports: the exit status and the lines of stderr, with nothing on stdout.
    void Reports(const Words& words, int status, const std::string& err) {
        auto result = Autocli(words);
        EXPECT_EQ(result.status, status) << ::testing::PrintToString(words);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err, err);
    }

    json SwitchNamed(const std::string& name) {
        for (const auto& row : Json({"list"})) {
            if (row["Name"] == name) {
                return row;
            }
        }
        return json();
    }

    Testing::TemporaryDirectory state_;
};

TEST_F(AutocliVswitch, ASwitchIsMadeChangedAndRemovedAcrossProcesses) {
    Quiet({"add", "-v", "labswitch9", "--ports=256"});
    Quiet({"uplink", "add", "-v", "labswitch9", "-u", "hwnic4"});
    Quiet({"uplink", "add", "--vswitch-name=labswitch9", "--uplink-name=hwnic5"});
    Quiet({"set", "-v", "labswitch9", "--mtu", "9000", "--cdp-status=both"});
    auto row = SwitchNamed("labswitch9");
    EXPECT_EQ(row["Num Ports"], 256);
    EXPECT_EQ(row["MTU"], 9000);
    EXPECT_EQ(row["CDP Status"], "both");
    EXPECT_EQ(row["Uplinks"], json({"hwnic4", "hwnic5"}));
    Quiet({"uplink", "remove", "-v", "labswitch9", "-u", "hwnic5"});
    EXPECT_EQ(SwitchNamed("labswitch9")["Uplinks"], json({"hwnic4"}));
    Quiet({"remove", "-v", "labswitch9"});
    EXPECT_TRUE(SwitchNamed("labswitch9").is_null());
}

TEST_F(AutocliVswitch, ListPrintsEachSwitchUnderItsNameWithTheDeclaredFields) {
    auto result = Autocli({"list", "-v", "lanswitch0"});
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out.rfind("lanswitch0\n   Name: lanswitch0\n   Class: etherswitch\n", 0), 0u)
        << result.out;
    std::size_t position = 0;
    for (const char* field :
         {"Num Ports: 128", "Used Ports: 3", "Configured Ports: 128", "MTU: 1500",
          "CDP Status: listen", "Beacon Enabled: false", "Beacon Interval: 1",
          "Beacon Threshold: 3", "Beacon Required By:", "Uplinks:", "hwnic0", "hwnic1",
          "Portgroups:", "Management Network", "VM Network"}) {
        position = result.out.find(field, position);
        ASSERT_NE(position, std::string::npos) << field << " in " << result.out;
    }
}

TEST_F(AutocliVswitch, PortGroupsAcrossProcesses) {
    Quiet({"portgroup", "add", "-p", "Lab Network", "-v", "storageswitch1"});
    Quiet({"portgroup", "set", "-p", "Lab Network", "--vlan-id", "42"});
    auto result = Autocli({"portgroup", "list"});
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out.rfind("Name ", 0), 0u) << result.out;
    EXPECT_NE(result.out.find("Lab Network         storageswitch1  0               42"),
              std::string::npos)
        << result.out;
    EXPECT_EQ(Json({"portgroup", "list", "--type=system"}),
              json::parse(R"([{"Name": "Kelm System Network", "Virtual Switch":
                 "kelmSystemSwitch0", "Active Clients": 1, "VLAN ID": 0}])"));
    Quiet({"portgroup", "remove", "-p", "Lab Network", "-v", "storageswitch1"});
    EXPECT_EQ(Json({"portgroup", "list"}).size(), 5u);
}

TEST_F(AutocliVswitch, SwitchPoliciesAcrossProcesses) {
    Quiet({"uplink", "add", "-v", "lanswitch0", "-u", "hwnic4"});
    Quiet({"policy", "failover", "set", "-v", "lanswitch0", "--active-uplinks=hwnic4,hwnic0",
           "--standby-uplinks=hwnic1", "-l", "mac", "-f", "beacon", "-n", "false", "-b", "false"});
    EXPECT_EQ(Json({"policy", "failover", "get", "-v", "lanswitch0"}),
              json::parse(R"({"Load Balancing": "srcmac", "Network Failure Detection": "beacon",
                 "Notify Switches": false, "Failback": false,
                 "Active Adapters": ["hwnic4", "hwnic0"], "Standby Adapters": ["hwnic1"],
                 "Unused Adapters": []})"));
    Quiet({"policy", "shaping", "set", "-v", "lanswitch0", "-e", "true", "-b", "1000", "-k", "2000",
           "-t", "300"});
    auto shaping = Autocli({"policy", "shaping", "get", "-v", "lanswitch0"});
    EXPECT_EQ(shaping.out,
              "Enabled: true\nAverage Bandwidth: 1000 Kbps\nPeak Bandwidth: 2000 Kbps\n"
              "Burst Size: 300 Kib\n");
    Quiet({"policy", "security", "set", "-v", "lanswitch0", "-p", "yes", "-m", "no"});
    EXPECT_EQ(Autocli({"policy", "security", "get", "-v", "lanswitch0"}).out,
              "Allow Promiscuous: true\nAllow MAC Address Change: false\n"
              "Allow Forged Transmits: true\n");
}

TEST_F(AutocliVswitch, PortGroupPoliciesAndTheirOverridesAcrossProcesses) {
    Quiet({"portgroup", "policy", "failover", "set", "-p", "VM Network", "-a", "hwnic1", "-s",
           "hwnic0"});
    auto failover = Json({"portgroup", "policy", "failover", "get", "-p", "VM Network"});
    EXPECT_EQ(failover["Active Adapters"], json({"hwnic1"}));
    EXPECT_EQ(failover["Standby Adapters"], json({"hwnic0"}));
    EXPECT_EQ(failover["Override Vswitch Uplinks"], true);
    EXPECT_EQ(failover["Override Vswitch Load Balancing"], false);

    Quiet({"portgroup", "policy", "security", "set", "-p", "VM Network", "-o", "true"});
    auto security = Json({"portgroup", "policy", "security", "get", "-p", "VM Network"});
    EXPECT_EQ(security["Allow Promiscuous"], true);
    EXPECT_EQ(security["Override Vswitch Allow Promiscuous"], true);
    EXPECT_EQ(security["Override Vswitch Allow Forged Transmits"], false);

    auto before = Autocli({"portgroup", "policy", "shaping", "get", "-p", "Backup Network"});
    EXPECT_NE(before.out.find("Override Vswitch Average Bandwidth: true\n"), std::string::npos);
    Quiet({"portgroup", "policy", "shaping", "set", "-p", "Backup Network", "--use-vswitch"});
    EXPECT_EQ(Autocli({"portgroup", "policy", "shaping", "get", "-p", "Backup Network"}).out,
              "Enabled: true\nAverage Bandwidth: 500000 Kbps\nPeak Bandwidth: 1000000 Kbps\n"
              "Burst Size: 409600 Kib\nOverride Vswitch Enabled: false\n"
              "Override Vswitch Average Bandwidth: false\nOverride Vswitch Peak Bandwidth: false\n"
              "Override Vswitch Burst Size: false\n");
}

TEST_F(AutocliVswitch, BadInputGetsOneClearMessageAndChangesNothing) {
    const auto failoverBefore = Json({"policy", "failover", "get", "-v", "lanswitch0"});
    Reports({"policy", "failover", "set", "-v", "lanswitch0", "--active-uplinks=hwnic0,hwnic77"}, 1,
            "Unknown NIC name in active uplinks : hwnic77\n");
    EXPECT_EQ(Json({"policy", "failover", "get", "-v", "lanswitch0"}), failoverBefore);

    Reports({"portgroup", "add", "-p", "VM Network", "-v", "storageswitch1"}, 1,
            "Port group VM Network already exists on lanswitch0\n");
    Reports({"add", "-v", std::string(128, 's')}, 1,
            "The virtual switch name exceeds the maximum allowed length. \n");
    Reports({"portgroup", "policy", "shaping", "get", "-p", "Lab"}, 1,
            "Unable to find a port group with the name Lab\n");

    auto vlan = Autocli({"portgroup", "set", "-p", "VM Network", "--vlan-id=4096"});
    EXPECT_EQ(vlan.status, 2);
    EXPECT_NE(vlan.err.find("vlan-id"), std::string::npos) << vlan.err;
    EXPECT_EQ(Json({"portgroup", "list"})[1]["VLAN ID"], 0);
    EXPECT_EQ(Json({"list"}).size(), 2u);
}

TEST_F(AutocliVswitch, AFaultOfTheHostReachesTheUserInItsOwnWords) {
    auto result = Autocli({"set", "-v", "lanswitch0", "--mtu=9000"},
                          {{"HOSTSIM_FAULTS", "VirtualSwitch::SetMTU@lanswitch0=Device busy"}});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "Device busy\n");
    EXPECT_EQ(SwitchNamed("lanswitch0")["MTU"], 1500);
}

TEST_F(AutocliVswitch, ProcessesChangingSwitchesAtOnceLoseNothing) {
    constexpr int kWorkers = 6;
    constexpr int kPortGroupsPerWorker = 3;
    std::vector<std::future<int>> workers;
    for (int worker = 0; worker < kWorkers; ++worker) {
        workers.push_back(std::async(std::launch::async, [this, worker] {
            int failures = 0;
            for (int index = 0; index < kPortGroupsPerWorker; ++index) {
                const std::string name = "PG " + std::to_string(worker * 10 + index);
                failures +=
                    Autocli({"portgroup", "add", "-p", name, "-v", "storageswitch1"}).status != 0;
                failures += Autocli({"portgroup", "set", "-p", name, "--vlan-id",
                                     std::to_string(100 + worker * 10 + index)})
                                .status != 0;
            }
            // Every worker tries to take the same free NIC; the host gives it to one switch.
            failures += Autocli({"uplink", "add", "-v",
                                 worker % 2 ? "lanswitch0" : "storageswitch1", "-u", "hwnic5"})
                            .status != 0;
            return failures;
        }));
    }
    int failures = 0;
    for (auto& worker : workers) {
        failures += worker.get();
    }
    EXPECT_EQ(failures, kWorkers - 1);  // the uplink went to one switch only
    std::set<std::string> seen;
    for (const auto& row : Json({"portgroup", "list"})) {
        const std::string name = row["Name"];
        if (name.rfind("PG ", 0) == 0) {
            EXPECT_EQ(row["VLAN ID"], 100 + std::stoi(name.substr(3))) << name;
            seen.insert(name);
        }
    }
    EXPECT_EQ(seen.size(), static_cast<std::size_t>(kWorkers * kPortGroupsPerWorker));
    const auto uplinks0 = SwitchNamed("lanswitch0")["Uplinks"];
    const auto uplinks1 = SwitchNamed("storageswitch1")["Uplinks"];
    EXPECT_EQ(uplinks0.size() + uplinks1.size(), 5u);
}

}  // namespace
