// IPv4 and IPv6 settings, IPv6 addresses and tags of Kelm interfaces: the refusals in their
// order, what the reads show, and each change followed by the read that shows it.
#include <algorithm>

#include "support/CommandTest.h"

namespace {

using Words = std::vector<std::string>;

struct Refusal {
    Words line;
    Words messages;
};

struct Cell {
    Words line;
    std::string key;
    std::string keyValue;
    std::string field;
    std::string value;
};

class InterfaceAddress : public Testing::CommandTest {
protected:
    void ExpectRefusals(const std::vector<Refusal>& table) {
        for (const auto& refusal : table) {
            SCOPED_TRACE(::testing::PrintToString(refusal.line));
            const auto result = Run(refusal.line);
            ASSERT_TRUE(result.output);
            EXPECT_EQ(result.output->GetErrorMessages(), refusal.messages);
            EXPECT_FALSE(result.output->GetRootObject());
        }
    }
    void ExpectCells(const std::vector<Cell>& table) {
        for (const auto& cell : table) {
            SCOPED_TRACE(::testing::PrintToString(cell.line) + " " + cell.keyValue + " " +
                         cell.field);
            const auto row = Testing::RowWhere(RunList(cell.line), cell.key, cell.keyValue);
            EXPECT_EQ(Testing::Str(row, cell.field), cell.value);
        }
    }
    std::shared_ptr<CppTools::MetaObj::MetaStruct> Ipv4(const std::string& name) {
        return Testing::RowWhere(RunList({"ip", "interface", "ipv4", "get", "-i", name}), "Name",
                                 name);
    }
    std::vector<Words> Addresses(const std::string& name) {
        std::vector<Words> rows;
        for (const auto& row :
             Testing::Rows(RunList({"ip", "interface", "ipv6", "address", "list", "-i", name}))) {
            rows.push_back({Testing::Str(row, "Address"),
                            std::to_string(Testing::Int(row, "Netmask")), Testing::Str(row, "Type"),
                            Testing::Str(row, "Status")});
        }
        return rows;
    }
    Words Tags(const std::string& name) {
        return Testing::Strings(RunStruct({"ip", "interface", "tag", "get", "-i", name}), "Tags");
    }
};

const Words kIpv4Get{"ip", "interface", "ipv4", "get"};
const Words kIpv6Get{"ip", "interface", "ipv6", "get"};

TEST_F(InterfaceAddress, Ipv4Refusals) {
    const Words set{"ip", "interface", "ipv4", "set", "-i", "kelm0"};
    auto with = [&set](const Words& more) {
        Words line = set;
        line.insert(line.end(), more.begin(), more.end());
        return line;
    };
    ExpectRefusals({
        {{"ip", "interface", "ipv4", "get", "-i", "kelm7"},
         {"Unable to find a Kelm interface with the name kelm7"}},
        {{"ip", "interface", "ipv4", "get", "-t", "user", "-N", "glidex"},
         {"Invalid type value, should be 'system'."}},
        {{"ip", "interface", "ipv4", "get", "-t", "system", "-N", "glidex"},
         {"Invalid netstack value, should be 'defaultTcpipStack'."}},
        {{"ip", "interface", "ipv4", "set", "-i", "kelm7", "-t", "dhcp"},
         {"Unable to find a Kelm interface with the name kelm7"}},
        {with({"-t", "static"}),
         {"The --type=static requires the --ipv4 and --netmask options.",
          "Invalid --ipv4 option provided. This address is not a valid IPv4 address",
          "Invalid --netmask option provided. This address is not a valid IPv4 address"}},
        {with({"-t", "static", "-I", "192.0.2.300", "-N", "255.255.255.0"}),
         {"Invalid --ipv4 option provided. This address is not a valid IPv4 address"}},
        {with({"-t", "static", "-I", "192.0.2.30", "-N", "255.255.255.0", "-g", "x"}),
         {"Invalid --gateway option provided. This address is not a valid IPv4 address"}},
        {with({"-t", "dhcp", "-g", "192.0.2.1"}),
         {"-I|--ipv4 or -g|--gateway can be specified only if type is static"}},
        {with({"-I", "192.0.2.30"}),
         {"-I|--ipv4 or -g|--gateway can be specified only if type is specified"}},
        {with({"-P", "true"}), {"-P|--peer-dns can be specified only if DHCP is enabled"}},
    });
    EXPECT_EQ(Testing::Str(Ipv4("kelm0"), "IPv4 Address"), "192.0.2.10");
}

TEST_F(InterfaceAddress, Ipv4GetShowsTypesAndTheNetstacksGateway) {
    ExpectCells({
        {kIpv4Get, "Name", "kelm0", "IPv4 Address", "192.0.2.10"},
        {kIpv4Get, "Name", "kelm0", "IPv4 Netmask", "255.255.255.0"},
        {kIpv4Get, "Name", "kelm0", "IPv4 Broadcast", "192.0.2.255"},
        {kIpv4Get, "Name", "kelm0", "Address Type", "STATIC"},
        {kIpv4Get, "Name", "kelm0", "Gateway", "192.0.2.1"},
        // kelm1 has no gateway of its own: glidex's default gateway shows.
        {kIpv4Get, "Name", "kelm1", "Gateway", "198.51.100.1"},
        {kIpv4Get, "Name", "kelm1", "Address Type", "STATIC"},
        {kIpv4Get, "Name", "kelm2", "Address Type", "DHCP"},
        {{"ip", "interface", "ipv4", "get", "-t", "system"},
         "Name",
         "kelm9",
         "IPv4 Address",
         "203.0.113.9"},
    });
    EXPECT_FALSE(Testing::Bool(Ipv4("kelm2"), "DHCP DNS"));
    EXPECT_FALSE(Testing::Bool(Ipv4("kelm0"), "DHCP DNS"));
    EXPECT_EQ(Testing::Rows(RunList({"ip", "interface", "ipv4", "get", "-N", "glidex"})).size(),
              1u);
}

TEST_F(InterfaceAddress, Ipv4SetShowsInGet) {
    RunOk({"ip", "interface", "ipv4", "set", "-i", "kelm2", "-t", "static", "-I", "192.0.2.40",
           "-N", "255.255.255.128", "-g", "192.0.2.126"});
    auto row = Ipv4("kelm2");
    EXPECT_EQ(Testing::Str(row, "IPv4 Address"), "192.0.2.40");
    EXPECT_EQ(Testing::Str(row, "IPv4 Netmask"), "255.255.255.128");
    EXPECT_EQ(Testing::Str(row, "Address Type"), "STATIC");
    EXPECT_EQ(Testing::Str(row, "Gateway"), "192.0.2.126");
    RunOk({"ip", "interface", "ipv4", "set", "-i", "kelm2", "-t", "none"});
    EXPECT_EQ(Testing::Str(Ipv4("kelm2"), "Address Type"), "NONE");
    RunOk({"ip", "interface", "ipv4", "set", "-i", "kelm2", "-t", "dhcp", "-P", "false"});
    row = Ipv4("kelm2");
    EXPECT_EQ(Testing::Str(row, "Address Type"), "DHCP");
    EXPECT_FALSE(Testing::Bool(row, "DHCP DNS"));
}

const char* const kBadIpv6 =
    "Invalid format for IPv6 address. Address must be in the format "
    "<ipv6-address>/<prefix-length>   Example: 1:2:3:4::/64";

TEST_F(InterfaceAddress, Ipv6Refusals) {
    ExpectRefusals({
        {{"ip", "interface", "ipv6", "address", "add", "-i", "kelm0", "-I", "2001:db8::5"},
         {kBadIpv6}},
        // The address is checked before the interface is looked for.
        {{"ip", "interface", "ipv6", "address", "add", "-i", "kelm7", "-I", "nonsense"},
         {kBadIpv6}},
        {{"ip", "interface", "ipv6", "address", "add", "-i", "kelm7", "-I", "2001:db8::5/64"},
         {"Unable to find a Kelm interface with the name kelm7"}},
        {{"ip", "interface", "ipv6", "address", "remove", "-i", "kelm0", "-I", "2001:db8::5"},
         {kBadIpv6}},
        {{"ip", "interface", "ipv6", "address", "list", "-t", "user"},
         {"Invalid type value, should be 'system'."}},
        {{"ip", "interface", "ipv6", "address", "list", "-i", "kelm7"},
         {"Unable to find a Kelm interface with the name kelm7"}},
        {{"ip", "interface", "ipv6", "set", "-i", "kelm7", "-e", "true"},
         {"Unable to find a Kelm interface with the name kelm7"}},
        {{"ip", "interface", "ipv6", "set", "-i", "kelm0", "-g", "2001:db8:0:1::fe"},
         {"Cannot set an interface gateway when Router Advertisement is enabled."}},
        {{"ip", "interface", "ipv6", "set", "-i", "kelm0", "-r", "false", "-g", "2001:db8::zz"},
         {"Invalid --gateway option provided.This address is not a valid IPv6 address"}},
        {{"ip", "interface", "ipv6", "set", "-i", "kelm0", "-r", "false", "-P", "true"},
         {"-P|--peer-dns can be specified only if DHCPv6 or RA is enabled"}},
    });
}

TEST_F(InterfaceAddress, Ipv6ReadsShowTypesStatusesAndSettings) {
    EXPECT_EQ(Addresses("kelm0"), (std::vector<Words>{
                                      {"fe80::4:ff:fe00:0", "64", "AUTOCONF", "PREFERRED"},
                                      {"2001:db8:0:1::10", "64", "STATIC", "PREFERRED"},
                                      {"2001:db8:0:1:4:ff:fe00:0", "64", "AUTOCONF", "DEPRECATED"},
                                  }));
    EXPECT_EQ(Addresses("kelm1"), (std::vector<Words>{
                                      {"fe80::4:ff:fe00:1", "64", "AUTOCONF", "PREFERRED"},
                                      {"2001:db8:0:2::20", "64", "DHCP", "TENTATIVE"},
                                      {"2001:db8:0:2::21", "64", "STATIC", "DUPLICATED"},
                                  }));
    ExpectCells({
        {kIpv6Get, "Name", "kelm1", "Gateway", "2001:db8:0:2::fe"},
        {{"ip", "interface", "ipv6", "get", "-n", "kelm1"},
         "Name",
         "kelm1",
         "Gateway",
         "2001:db8:0:2::fe"},
    });
    const auto kelm1 = Testing::RowWhere(RunList(kIpv6Get), "Name", "kelm1");
    EXPECT_TRUE(Testing::Bool(kelm1, "IPv6 Enabled"));
    EXPECT_TRUE(Testing::Bool(kelm1, "DHCPv6 Enabled"));
    EXPECT_FALSE(Testing::Bool(kelm1, "Router Adv Enabled"));
    const auto kelm0 = Testing::RowWhere(RunList(kIpv6Get), "Name", "kelm0");
    EXPECT_TRUE(Testing::Bool(kelm0, "Router Adv Enabled"));
}

TEST_F(InterfaceAddress, Ipv6ChangesShowInTheReads) {
    RunOk(
        {"ip", "interface", "ipv6", "address", "add", "-i", "kelm0", "-I", "2001:db8:0:1::77/64"});
    auto rows = Addresses("kelm0");
    EXPECT_NE(
        std::find(rows.begin(), rows.end(), Words{"2001:db8:0:1::77", "64", "STATIC", "PREFERRED"}),
        rows.end());
    RunOk({"ip", "interface", "ipv6", "address", "remove", "-i", "kelm0", "-I",
           "2001:db8:0:1::77/64"});
    EXPECT_EQ(Addresses("kelm0").size(), 3u);

    RunOk(
        {"ip", "interface", "ipv6", "set", "-i", "kelm0", "-r", "false", "-g", "2001:db8:0:1::fe"});
    const auto kelm0 = Testing::RowWhere(RunList(kIpv6Get), "Name", "kelm0");
    EXPECT_FALSE(Testing::Bool(kelm0, "Router Adv Enabled"));
    EXPECT_EQ(Testing::Str(kelm0, "Gateway"), "2001:db8:0:1::fe");

    // With DNS from router advertisements, turning RA off would leave no source.
    RunOk({"ip", "interface", "ipv6", "set", "-i", "kelm0", "-r", "true", "-P", "true"});
    EXPECT_TRUE(Testing::Bool(Testing::RowWhere(RunList(kIpv6Get), "Name", "kelm0"), "DHCP DNS"));
    EXPECT_EQ(RunError({"ip", "interface", "ipv6", "set", "-i", "kelm0", "-r", "false"}),
              "Cannot disable both DHCPv6 and RA when peer DNS is enabled");
    EXPECT_TRUE(
        Testing::Bool(Testing::RowWhere(RunList(kIpv6Get), "Name", "kelm0"), "Router Adv Enabled"));
}

TEST_F(InterfaceAddress, TagRefusals) {
    const auto invalid = Run({"ip", "interface", "tag", "add", "-i", "kelm0", "-t", "Bogus"});
    ASSERT_TRUE(invalid.output);
    const auto messages = invalid.output->GetErrorMessages();
    ASSERT_EQ(messages.size(), 2u);
    EXPECT_EQ(messages[0], "Invalid tag name Bogus");
    EXPECT_EQ(messages[1].rfind("Supported tags are: Management, ", 0), 0u) << messages[1];
    EXPECT_FALSE(invalid.output->GetRootObject());
    ExpectRefusals({
        // glidex is up and kelm1 is on it.
        {{"ip", "interface", "tag", "add", "-i", "kelm0", "-t", "Glidex"},
         {"Failed to add Glidex tag when dedicated stack is instantiated"}},
        {{"ip", "interface", "tag", "add", "-i", "kelm7", "-t", "Management"},
         {"Unable to find kelmnic with name kelm7"}},
        {{"ip", "interface", "tag", "add", "-i", "kelm1", "-t", "Management"},
         {"netstack mismatch for tagManagement"}},
        {{"ip", "interface", "tag", "remove", "-i", "kelm7", "-t", "Management"},
         {"Unable to find kelmnic with name kelm7"}},
        {{"ip", "interface", "tag", "remove", "-i", "kelm1", "-t", "Glidex"},
         {"Can not remove tag from pre-defined netstack."}},
        {{"ip", "interface", "tag", "get", "-i", "kelm7"},
         {"Unable to find an interface with name kelm7"}},
    });
    EXPECT_EQ(Tags("kelm1"), (Words{"Glidex"}));
}

TEST_F(InterfaceAddress, TagChangesShowInGet) {
    // Tags can be removed only on an interface of a netstack the system doesn't define.
    RunOk({"ip", "netstack", "add", "-N", "labstack1"});
    RunOk({"vswitch", "standard", "portgroup", "add", "-v", "lanswitch0", "-p", "Lab Network"});
    RunOk({"ip", "interface", "add", "-p", "Lab Network", "-N", "labstack1", "-i", "kelm5"});
    EXPECT_EQ(Tags("kelm5"), Words{});
    RunOk({"ip", "interface", "tag", "add", "-i", "kelm5", "-t", "Management"});
    RunOk({"ip", "interface", "tag", "add", "-i", "kelm5", "-t", "Provisioning"});
    EXPECT_EQ(Tags("kelm5"), (Words{"Management", "Provisioning"}));
    RunOk({"ip", "interface", "tag", "remove", "-i", "kelm5", "-t", "Management"});
    EXPECT_EQ(Tags("kelm5"), (Words{"Provisioning"}));
    RunOk({"ip", "interface", "tag", "add", "-i", "kelm0", "-t", "Provisioning"});
    EXPECT_EQ(Tags("kelm0"), (Words{"Management", "Provisioning"}));
}

}  // namespace
