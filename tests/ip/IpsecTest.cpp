// Security associations and policies: their renderings, each command's checks in their order,
// and the forms of removal.
#include "IpServicesTest.h"
#include "ip/IpsecLifetime.h"

namespace {

using IpServicesTesting::Words;
using Outcome = IpServicesTesting::Outcome;

const Words kSaFields{"Name", "Source Address",       "Destination Address", "State",   "SPI",
                      "Mode", "Encryption Algorithm", "Integrity Algorithm", "Lifetime"};
const Words kSpFields{"Name",
                      "Source Address",
                      "Source Port",
                      "Destination Address",
                      "Destination Port",
                      "Protocol",
                      "Flow",
                      "Action",
                      "Mode",
                      "SA Name"};
const std::string kWhichRemoval =
    "Can not figure out which operation you want to perform.\n"
    "Remove a unique SA: Only specify the '--sa-name' option to remove a normal SA.\n"
    "Remove an auto SA: Set the '--sa-name' to 'auto'. You should also specify '--sa-source', "
    "'--sa-destination' and '--sa-spi' and omit '--remove-all' when removing an auto SA.\n"
    "Remove all SAs: You should only set the flag '--remove-all' to remove all SAs.";

class Ipsec : public IpServicesTesting::IpServicesTest {
protected:
    std::vector<Words> Associations() { return Table({"ip", "ipsec", "sa", "list"}, kSaFields); }
    std::vector<Words> Policies() { return Table({"ip", "ipsec", "sp", "list"}, kSpFields); }
    // Adds an association from ::10 to ::99 with the SPI and the further parameters given.
    Outcome AddAssociation(const std::string& spi, const Words& more,
                           const std::string& name = "sa9") {
        Words line{"ip", "ipsec",
                   "sa", "add",
                   "-n", name,
                   "-s", "2001:db8:0:1::10",
                   "-d", "2001:db8:0:1::99",
                   "-p", spi,
                   "-i", "hmac-sha1",
                   "-K", "integrity-key"};
        line.insert(line.end(), more.begin(), more.end());
        return Report(line);
    }
};

TEST(IpsecLifetime, HoursMinutesAndSecondsEachWithATrailingBlank) {
    using ZanvexCli::NetworkNamespace::ConvertToHrsMinsAndSecs;
    const std::vector<std::pair<std::uint64_t, std::string>> cases = {
        {0, "infinite"},     {1, "1s "},       {60, "1m "},     {3600, "1h "},
        {3661, "1h 1m 1s "}, {7205, "2h 5s "}, {86400, "24h "}, {59 * 60 + 59, "59m 59s "},
    };
    for (const auto& [seconds, text] : cases) {
        EXPECT_EQ(ConvertToHrsMinsAndSecs(seconds), text) << seconds;
    }
}

TEST_F(Ipsec, ListsShowTheDefaultDatabases) {
    EXPECT_EQ(Associations(),
              (std::vector<Words>{
                  {"sa-mgmt0", "2001:db8:0:1::10", "2001:db8:0:1::31", "mature", "0x1000",
                   "transport", "aes128-cbc", "hmac-sha2-256", "infinite"},
                  {"auto", "2001:db8:0:1::10", "2001:db8:0:1::42", "mature", "0x2f1a", "transport",
                   "3des-cbc", "hmac-sha1", "1h "},
              }));
    EXPECT_EQ(Policies(), (std::vector<Words>{
                              {"sp-mgmt0", "2001:db8:0:1::10/128", "0", "2001:db8:0:1::31/128",
                               "443", "tcp", "out", "ipsec", "transport", "sa-mgmt0"},
                              {"sp-drop1", "::/0", "0", "2001:db8:0:100::/56", "0", "any", "in",
                               "discard", "any", ""},
                          }));
}

TEST_F(Ipsec, AssociationSpiAndKeyChecks) {
    const std::vector<std::tuple<std::string, Words, Outcome, std::string>> cases = {
        {"1000", {"-e", "null"}, {{}, true}, "0x1000"},
        {" 0x1000", {"-e", "aes128-cbc", "-k", "key"}, {{}, true}, "0x1000"},
        {"0x123456789", {"-e", "null", "-k", "unused"}, {{}, true}, "0x23456789"},
        {"12g",
         {"-e", "null"},
         {{"Check the input value for '--sa-spi'. Should be hex integer. Got 12g"}, false},
         ""},
        {"zz",
         {"-e", "null"},
         {{"Check the input value for '--sa-spi'. Should be hex integer. Got zz"}, false},
         ""},
        {"0x1ffffffffffffffff",
         {"-e", "null"},
         {{"Check the input value for '--sa-spi'. Should be hex integer. Got 0x1ffffffffffffffff"},
          false},
         ""},
        {"1000", {"-e", "3des-cbc"}, {{"Missing encryption key"}, false}, ""},
    };
    for (const auto& [spi, more, outcome, shown] : cases) {
        SCOPED_TRACE(spi);
        EXPECT_EQ(AddAssociation(spi, more), outcome);
        const auto rows = Associations();
        if (outcome.trueRoot) {
            ASSERT_EQ(rows.size(), 3u);
            EXPECT_EQ(rows.back()[4], shown);
            EXPECT_EQ(rows.back()[8], "infinite");
            Change({"ip", "ipsec", "sa", "remove", "-n", "sa9"});
        } else {
            EXPECT_EQ(rows.size(), 2u);
        }
    }
}

TEST_F(Ipsec, AssociationHostRefusals) {
    EXPECT_EQ(AddAssociation("0x2000", {"-e", "null"}, "sa-mgmt0"),
              (Outcome{{"Security association sa-mgmt0 already exists"}, false}));
    EXPECT_EQ(
        Report({"ip", "ipsec", "sa", "add", "-n", "sa9", "-s", "2001:db8:0:1::10", "-d",
                "2001:db8:0:1::31", "-p", "1000", "-e", "null", "-i", "hmac-sha1", "-K", "k"}),
        (Outcome{{"Security association sa-mgmt0 from 2001:db8:0:1::10 to "
                  "2001:db8:0:1::31 already has SPI 0x1000"},
                 false}));
    EXPECT_EQ(
        AddAssociation("0x2000", {"-e", "null"}, "auto"),
        (Outcome{{"The name auto is kept for the security associations the kernel makes"}, false}));
    EXPECT_EQ(
        Report({"ip", "ipsec", "sa", "add", "-n", "sa9", "-s", "192.0.2.10", "-d",
                "2001:db8:0:1::31", "-p", "1000", "-e", "null", "-i", "hmac-sha1", "-K", "k"}),
        (Outcome{{"'192.0.2.10' is not a valid IPv6 address"}, false}));
}

TEST_F(Ipsec, AssociationRemovalForms) {
    const std::vector<Words> wrong = {
        {"-n", "auto"},
        {"-n", "sa-mgmt0", "-p", "1000"},
        {"-a", "-n", "sa-mgmt0"},
        {"-n", "auto", "-s", "2001:db8:0:1::10", "-d", "2001:db8:0:1::42", "-p", "2f1a", "-a"},
        {},
    };
    for (const auto& parameters : wrong) {
        Words line{"ip", "ipsec", "sa", "remove"};
        line.insert(line.end(), parameters.begin(), parameters.end());
        EXPECT_EQ(RunError(line), kWhichRemoval) << ::testing::PrintToString(line);
    }
    EXPECT_EQ(Associations().size(), 2u);
    EXPECT_EQ(Report({"ip", "ipsec", "sa", "remove", "-n", "auto", "-s", "2001:db8:0:1::10", "-d",
                      "2001:db8:0:1::42", "-p", "xyz"}),
              (Outcome{{"There is no automatic security association from 2001:db8:0:1::10 to "
                        "2001:db8:0:1::42 with SPI 0x0"},
                       false}));
    Change({"ip", "ipsec", "sa", "remove", "-n", "auto", "-s", "2001:DB8:0:1:0::10", "-d",
            "2001:db8:0:1::42", "-p", "0x2F1A"});
    EXPECT_EQ(Column({"ip", "ipsec", "sa", "list"}, "Name"), Words{"sa-mgmt0"});
    EXPECT_EQ(Report({"ip", "ipsec", "sa", "remove", "-n", ""}),
              (Outcome{{"There is no security association named "}, false}));
}

TEST_F(Ipsec, RemovingAnAssociationAPolicyNamesMarksThePolicy) {
    Change({"ip", "ipsec", "sa", "remove", "-n", "sa-mgmt0"});
    const auto result = Run({"ip", "ipsec", "sp", "list"});
    ASSERT_TRUE(result.output);
    EXPECT_EQ(result.output->GetErrorMessages(),
              Words{"*Some SPs with unique but deleted SAs were found. Please remove these SPs as "
                    "they cannot be used anymore."});
    const auto list =
        std::dynamic_pointer_cast<CppTools::MetaObj::MetaList>(result.output->GetRootObject());
    ASSERT_TRUE(list);
    const auto rows = Testing::Rows(list);
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(Testing::Str(rows[0], "SA Name"), "UNKNOWN*");
    EXPECT_EQ(Testing::Str(rows[1], "SA Name"), "");
}

TEST_F(Ipsec, PolicyAddStoresModeAndAssociationOnlyForIpsec) {
    Change({"ip", "ipsec",    "sp", "add", "-n", "sp9",
            "-a", "sa-mgmt0", "-s", "any", "-d", "2001:db8:0:1::/64",
            "-m", "tunnel",   "-p", "0",   "-P", "22",
            "-A", "discard",  "-u", "udp", "-w", "in"});
    Change({"ip", "ipsec",
            "sp", "add",
            "-n", "sp10",
            "-a", "sa-mgmt0",
            "-s", "2001:db8:0:1::10/128",
            "-d", "2001:db8::/32",
            "-m", "tunnel",
            "-p", "500",
            "-P", "0",
            "-A", "ipsec",
            "-w", "out"});
    const auto rows = Policies();
    ASSERT_EQ(rows.size(), 4u);
    EXPECT_EQ(rows[2], (Words{"sp9", "::/0", "0", "2001:db8:0:1::/64", "22", "udp", "in", "discard",
                              "any", ""}));
    EXPECT_EQ(rows[3], (Words{"sp10", "2001:db8:0:1::10/128", "500", "2001:db8::/32", "0", "any",
                              "out", "ipsec", "tunnel", "sa-mgmt0"}));
}

TEST_F(Ipsec, PolicyRefusals) {
    const std::vector<std::pair<Words, std::string>> cases = {
        {{"-n", "sp-mgmt0", "-A", "none", "-w", "in"}, "Security policy sp-mgmt0 already exists"},
        {{"-n", "sp9", "-A", "none"}, "Security policy sp9 needs a flow direction, in or out"},
        {{"-n", "sp9", "-w", "in"}, "Security policy sp9 needs an action, none, discard or ipsec"},
        {{"-n", "sp9", "-A", "ipsec", "-w", "in", "-a", "sa-gone"},
         "There is no security association named sa-gone"},
    };
    for (const auto& [parameters, message] : cases) {
        Words line{"ip", "ipsec", "sp", "add", "-s", "any", "-d", "any", "-p", "0", "-P", "0"};
        line.insert(line.end(), parameters.begin(), parameters.end());
        EXPECT_EQ(RunError(line), message) << ::testing::PrintToString(line);
    }
    EXPECT_EQ(RunError({"ip", "ipsec", "sp", "add", "-n", "sp9", "-s", "2001:db8::", "-d", "any",
                        "-p", "0", "-P", "0", "-A", "none", "-w", "in"}),
              "'2001:db8::' is not a valid IPv6 network: expected an address and a prefix length, "
              "2001:db8::/32");
    EXPECT_EQ(Policies().size(), 2u);
}

TEST_F(Ipsec, PolicyRemovalAndFlushes) {
    const Outcome which{{"You should specify exactly one of : --remove-all, --sa-name"}, true};
    EXPECT_EQ(Report({"ip", "ipsec", "sp", "remove"}), which);
    EXPECT_EQ(Report({"ip", "ipsec", "sp", "remove", "-a", "-n", "sp-drop1"}), which);
    EXPECT_EQ(Report({"ip", "ipsec", "sp", "remove", "-n", "sp-none"}),
              (Outcome{{"There is no security policy named sp-none"}, false}));
    Change({"ip", "ipsec", "sp", "remove", "-n", "sp-drop1"});
    EXPECT_EQ(Column({"ip", "ipsec", "sp", "list"}, "Name"), Words{"sp-mgmt0"});
    Change({"ip", "ipsec", "sa", "remove", "--remove-all"});
    Change({"ip", "ipsec", "sp", "remove", "--remove-all"});
    EXPECT_EQ(Associations(), std::vector<Words>{});
    EXPECT_EQ(Policies(), std::vector<Words>{});
}

}  // namespace
