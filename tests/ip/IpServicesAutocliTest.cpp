// IP services through the real autocli binary: the tables as printed, exit statuses, and what a
// later process sees.
#include <nlohmann/json.hpp>

#include "support/CommandTest.h"

namespace {

using nlohmann::json;
using Testing::ProcessResult;
using Words = std::vector<std::string>;

class IpServicesAutocli : public ::testing::Test {
protected:
    ProcessResult Autocli(Words words, const std::string& formatter = {}) {
        words.insert(words.begin(), "network");
        if (!formatter.empty()) {
            words.insert(words.begin(), "--formatter=" + formatter);
        }
        return Testing::RunAutocli(words, state_.Path());
    }

    json Json(const Words& words) {
        const auto result = Autocli(words, "json");
        EXPECT_EQ(result.status, 0) << result.err;
        return json::parse(result.out, nullptr, false);
    }

    Testing::TemporaryDirectory state_;
};

TEST_F(IpServicesAutocli, RouteTableAsPrinted) {
    const auto result = Autocli({"ip", "route", "ipv4", "list", "-N", "glidex"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out,
              "Network        Netmask          Gateway         Interface  Source\n"
              "-------------  ---------------  --------------  ---------  ------\n"
              "default        0.0.0.0          198.51.100.1    kelm1      DHCP\n"
              "198.51.100.0   255.255.255.0    0.0.0.0         kelm1      DHCP\n"
              "203.0.113.128  255.255.255.128  198.51.100.254  kelm1      MANUAL\n");
}

TEST_F(IpServicesAutocli, ChangesReachTheNextProcess) {
    EXPECT_EQ(
        Autocli({"ip", "dns", "search", "add", "-d", "lab.example.net", "-N", "glidex"}).status, 0);
    EXPECT_EQ(
        Json({"ip", "dns", "search", "list", "-N", "glidex"}),
        json::parse(R"({"DNS Search Domains": ["migration.example.net", "lab.example.net"]})"));
    EXPECT_EQ(Json({"ip", "dns", "search", "list"}),
              json::parse(R"({"DNS Search Domains": ["mgmt.example.com", "example.com"]})"));
    EXPECT_EQ(Autocli({"ip", "ipsec", "sa", "remove", "--remove-all"}).status, 0);
    EXPECT_EQ(Json({"ip", "ipsec", "sa", "list"}), json::array());
    // The policy that named a removed association stays, marked, with a note beside the list.
    const auto policies = Autocli({"ip", "ipsec", "sp", "list"}, "json");
    EXPECT_EQ(policies.status, 1);
    EXPECT_EQ(policies.err,
              "*Some SPs with unique but deleted SAs were found. Please remove these SPs as they "
              "cannot be used anymore.\n");
    const auto rows = json::parse(policies.out, nullptr, false);
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[0]["SA Name"], "UNKNOWN*");
}

TEST_F(IpServicesAutocli, FailuresAndTheRootBesideThem) {
    const auto refused = Autocli({"ip", "hosts", "add", "-I", "not-an-address", "-H", "x"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.out, "");
    EXPECT_EQ(refused.err,
              "Error adding etc host item:'not-an-address' is not a valid IPv4 or IPv6 address\n");
    const auto kept =
        Autocli({"ip", "route", "ipv4", "remove", "-n", "default", "-g", "192.0.2.9"}, "json");
    EXPECT_EQ(kept.status, 1);
    EXPECT_EQ(kept.out, "true\n");
    EXPECT_EQ(kept.err, "192.0.2.9 is not a default route.\n");
    const auto associations = Json({"ip", "ipsec", "sa", "list"});
    ASSERT_EQ(associations.size(), 2u);
    EXPECT_EQ(associations[1]["SPI"], "0x2f1a");
    EXPECT_EQ(associations[1]["Lifetime"], "1h ");
}

}  // namespace
