// DNS servers and search domains per netstack instance, the hosts file and the IPv6 switch.
#include "IpServicesTest.h"
#include "hostsim/Control.h"
#include "hostsim/core/Json.h"
#include "hostsim/core/Profile.h"
#include "hostsim/core/Store.h"

namespace {

using IpServicesTesting::Words;
using Outcome = IpServicesTesting::Outcome;

class Dns : public IpServicesTesting::IpServicesTest {
protected:
    Words Servers(const Words& parameters = {}) {
        Words words{"ip", "dns", "server", "list"};
        words.insert(words.end(), parameters.begin(), parameters.end());
        return Testing::Strings(RunStruct(words), "DNS Servers");
    }
    Words Domains(const Words& parameters = {}) {
        Words words{"ip", "dns", "search", "list"};
        words.insert(words.end(), parameters.begin(), parameters.end());
        return Testing::Strings(RunStruct(words), "DNS Search Domains");
    }
};

TEST_F(Dns, ServersAndDomainsArePerInstanceAndKeepTheirOrder) {
    EXPECT_EQ(Servers(), (Words{"192.0.2.53", "2001:db8:0:1::53"}));
    EXPECT_EQ(Servers({"-N", "glidex"}), Words{"198.51.100.53"});
    Change({"ip", "dns", "server", "add", "-s", "198.51.100.54", "-N", "glidex"});
    Change({"ip", "dns", "server", "add", "-s", "2001:DB8::35"});
    EXPECT_EQ(Servers({"-N", "glidex"}), (Words{"198.51.100.53", "198.51.100.54"}));
    EXPECT_EQ(Servers(), (Words{"192.0.2.53", "2001:db8:0:1::53", "2001:db8::35"}));
    Change({"ip", "dns", "server", "remove", "-s", "192.0.2.53"});
    EXPECT_EQ(Servers(), (Words{"2001:db8:0:1::53", "2001:db8::35"}));
    Change({"ip", "dns", "server", "remove", "--all", "-s", "not an address"});
    EXPECT_EQ(Servers(), Words{});
    EXPECT_EQ(Servers({"-N", "glidex"}).size(), 2u);

    EXPECT_EQ(Domains(), (Words{"mgmt.example.com", "example.com"}));
    Change({"ip", "dns", "search", "add", "-d", "lab.example.net", "-N", "glidex"});
    EXPECT_EQ(Domains({"-N", "glidex"}), (Words{"migration.example.net", "lab.example.net"}));
    EXPECT_EQ(Domains(), (Words{"mgmt.example.com", "example.com"}));
    Change({"ip", "dns", "search", "remove", "-d", "mgmt.example.com"});
    Change({"ip", "dns", "search", "remove", "-d", "example.com"});
    EXPECT_EQ(Domains(), Words{});
}

TEST_F(Dns, ServerChecksComeInTheirOrder) {
    const std::vector<std::pair<Words, Outcome>> cases = {
        {{"add", "-s", "dns.example.com"},
         {{"The specified address 'dns.example.com' is not recognised as a valid IP address"},
          false}},
        {{"remove", "-s", "192.0.2.999"},
         {{"The specified address '192.0.2.999' is not recognised as a valid IP address"}, false}},
        {{"remove"}, {{"You must specify exactly one of: --all, --server"}, false}},
        // The host's refusals stand beside a true root.
        {{"add", "-s", "192.0.2.53"},
         {{"DNS server 192.0.2.53 is already in the list of netstack defaultTcpipStack"}, true}},
        {{"remove", "-s", "192.0.2.54"},
         {{"DNS server 192.0.2.54 is not in the list of netstack defaultTcpipStack"}, true}},
        {{"add", "-s", "192.0.2.54", "-N", "nosuchstack"},
         {{"There is no netstack instance named nosuchstack"}, true}},
        {{"list", "-N", "nosuchstack"},
         {{"There is no netstack instance named nosuchstack"}, false}},
    };
    for (const auto& [parameters, outcome] : cases) {
        Words line{"ip", "dns", "server"};
        line.insert(line.end(), parameters.begin(), parameters.end());
        EXPECT_EQ(Report(line), outcome) << ::testing::PrintToString(line);
    }
    EXPECT_EQ(Servers(), (Words{"192.0.2.53", "2001:db8:0:1::53"}));
}

TEST_F(Dns, NoServerIsAddedWhileAnInterfaceTakesItsDnsFromDhcp) {
    // kelm0 learns its IPv4 settings, DNS servers included, by DHCP.
    auto profile = HostSim::ExportHost(HostSim::Store());
    for (auto& [section, content] : profile.items()) {
        if (!content.is_array()) {
            continue;
        }
        for (auto& entry : content) {
            if (entry.value("name", "") == "kelm0" && entry.contains("ipConfig")) {
                for (const char* config : {"ipConfig", "configuredIpConfig"}) {
                    if (entry.contains(config)) {
                        entry[config]["ipv4"]["dhcp"] = true;
                        entry[config]["ipv4"]["dhcpDns"] = true;
                    }
                }
            }
        }
    }
    HostSim::ImportProfile(profile.dump());
    // The DHCP test comes ahead of the address test.
    EXPECT_EQ(RunError({"ip", "dns", "server", "add", "-s", "not an address"}),
              "Can't add DNS server when IPv4 DHCP DNS is enabled");
    EXPECT_EQ(RunError({"ip", "dns", "server", "add", "-s", "192.0.2.54"}),
              "Can't add DNS server when IPv4 DHCP DNS is enabled");
    EXPECT_EQ(Servers(), (Words{"192.0.2.53", "2001:db8:0:1::53"}));
    Change({"ip", "dns", "server", "add", "-s", "198.51.100.54", "-N", "glidex"});
    // Removing and search domains have no such test.
    Change({"ip", "dns", "server", "remove", "-s", "192.0.2.53"});
    Change({"ip", "dns", "search", "add", "-d", "dhcp.example.com"});
}

TEST_F(Dns, SearchDomainRefusals) {
    EXPECT_EQ(Report({"ip", "dns", "search", "add", "-d", "bad_domain.example.com"}),
              (Outcome{{"Invalid search domain 'bad_domain.example.com': only letters, digits, "
                        "hyphens and dots are allowed"},
                       true}));
    EXPECT_EQ(Report({"ip", "dns", "search", "add", "-d", "example.com"}),
              (Outcome{{"Search domain example.com is already in the search list of netstack "
                        "defaultTcpipStack"},
                       true}));
    EXPECT_EQ(Report({"ip", "dns", "search", "remove", "-d", "example.org"}),
              (Outcome{{"Search domain example.org is not in the search list of netstack "
                        "defaultTcpipStack"},
                       true}));
    EXPECT_EQ(Domains(), (Words{"mgmt.example.com", "example.com"}));
}

TEST_F(Dns, HostsEntries) {
    const Words fields{"IP address", "HostName", "Comment"};
    EXPECT_EQ(Table({"ip", "hosts", "list"}, fields),
              (std::vector<Words>{
                  {"192.0.2.31", "console.mgmt.example.com", "management console"},
                  {"2001:db8:0:1::31", "console6.mgmt.example.com", ""},
                  {"198.51.100.42", "peer.migration.example.net", "migration peer"},
              }));
    Change({"ip", "hosts", "add", "-I", "203.0.113.7", "-H", "backup.example.net", "-A", "backup",
            "-A", "vault", "-C", "backup target"});
    Change({"ip", "hosts", "add", "--ip", "2001:DB8::7", "--hostname", "backup6.example.net"});
    const auto rows = Testing::Rows(RunList({"ip", "hosts", "list"}));
    ASSERT_EQ(rows.size(), 5u);
    EXPECT_EQ(Testing::Strings(rows[3], "Aliases"), (Words{"backup", "vault"}));
    EXPECT_EQ(Testing::Str(rows[3], "Comment"), "backup target");
    EXPECT_EQ(Testing::Str(rows[4], "IP address"), "2001:db8::7");
    EXPECT_EQ(Testing::Strings(rows[4], "Aliases"), Words{});
    Change({"ip", "hosts", "remove", "-I", "192.0.2.31", "-H", "console.mgmt.example.com"});
    EXPECT_EQ(Column({"ip", "hosts", "list"}, "HostName").front(), "console6.mgmt.example.com");
}

TEST_F(Dns, HostsRefusalsChangeNothing) {
    const auto before = Table({"ip", "hosts", "list"}, {"IP address", "HostName"});
    EXPECT_EQ(RunError({"ip", "hosts", "add", "-I", "192.0.2", "-H", "short.example.com"}),
              "Error adding etc host item:'192.0.2' is not a valid IPv4 or IPv6 address");
    EXPECT_EQ(RunError({"ip", "hosts", "add", "-I", "192.0.2.9", "-H", "-bad.example.com"}),
              "Error adding etc host item:Invalid host name '-bad.example.com': a part can't "
              "start or end with a hyphen");
    EXPECT_EQ(
        RunError({"ip", "hosts", "add", "-I", "192.0.2.31", "-H", "console.mgmt.example.com"}),
        "Error adding etc host item:The hosts file already maps 192.0.2.31 to "
        "console.mgmt.example.com");
    EXPECT_EQ(RunError({"ip", "hosts", "remove", "-I", "192.0.2.31", "-H", "console"}),
              "Error removing etc host item:The hosts file has no entry mapping 192.0.2.31 to "
              "console");
    EXPECT_EQ(Table({"ip", "hosts", "list"}, {"IP address", "HostName"}), before);
}

TEST_F(Dns, Ipv6Switch) {
    EXPECT_TRUE(Testing::Bool(RunStruct({"ip", "get"}), "IPv6 Enabled"));
    Change({"ip", "set"});
    EXPECT_TRUE(Testing::Bool(RunStruct({"ip", "get"}), "IPv6 Enabled"));
    Change({"ip", "set", "--ipv6-enabled", "false"});
    EXPECT_FALSE(Testing::Bool(RunStruct({"ip", "get"}), "IPv6 Enabled"));
    Change({"ip", "set", "-e", "yes"});
    EXPECT_TRUE(Testing::Bool(RunStruct({"ip", "get"}), "IPv6 Enabled"));
}

}  // namespace
