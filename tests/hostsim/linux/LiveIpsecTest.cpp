// IPsec on the live host: policies and associations as the XFRM policies and states of the
// test's own network namespace, checked against what ip xfrm (which nobody here wrote) shows.
#include <sys/stat.h>

#include "support/LiveHostTest.h"

namespace {

using Testing::Int;
using Testing::Rows;
using Testing::Str;

const std::vector<std::string> kSaAdd = {"ip", "ipsec",
                                         "sa", "add",
                                         "-n", "sa1",
                                         "-s", "2001:db8::1",
                                         "-d", "2001:db8::2",
                                         "-p", "1000",
                                         "-m", "transport",
                                         "-e", "aes128-cbc",
                                         "-k", "0x00112233445566778899aabbccddeeff",
                                         "-i", "hmac-sha1",
                                         "-K", "0x00112233445566778899aabbccddeeff00112233"};
// The same association as ip xfrm writes it.
constexpr char kIpStateAdd[] =
    "ip xfrm state add src 2001:db8::1 dst 2001:db8::2 proto esp spi 0x1000 mode transport "
    "enc 'cbc(aes)' 0x00112233445566778899aabbccddeeff "
    "auth-trunc 'hmac(sha1)' 0x00112233445566778899aabbccddeeff00112233 96";

struct PolicyCase {
    std::vector<std::string> options;
    // What `ip xfrm policy` shows of it.
    const char* ip;
    // The list's row: source, source port, destination, destination port, protocol, flow,
    // action, mode, SA name.
    std::vector<std::string> row;
};

const PolicyCase kPolicies[] = {
    {{"-s", "2001:db8::/64", "-d", "any", "-p", "0", "-P", "80", "-u", "tcp", "-w", "out", "-A",
      "discard"},
     "src 2001:db8::/64 dst ::/0 proto tcp dport 80 \n"
     "\tdir out action block priority 0 ptype main \n",
     {"2001:db8::/64", "0", "::/0", "80", "tcp", "out", "discard", "any", ""}},
    {{"-s", "any", "-d", "2001:db8:1::/48", "-p", "0", "-P", "0", "-w", "in", "-A", "ipsec", "-m",
      "tunnel"},
     "src ::/0 dst 2001:db8:1::/48 \n"
     "\tdir in priority 0 ptype main \n"
     "\ttmpl src :: dst ::\n"
     "\t\tproto esp reqid 0 mode tunnel\n",
     {"::/0", "0", "2001:db8:1::/48", "0", "any", "in", "ipsec", "tunnel", ""}},
    {{"-s", "2001:db8::1/128", "-d", "2001:db8::2/128", "-p", "5000", "-P", "53", "-u", "udp", "-w",
      "out", "-A", "none"},
     "src 2001:db8::1/128 dst 2001:db8::2/128 proto udp sport 5000 dport 53 \n"
     "\tdir out priority 0 ptype main \n",
     {"2001:db8::1/128", "5000", "2001:db8::2/128", "53", "udp", "out", "none", "any", ""}},
    {{"-s", "2001:db8::/64", "-d", "any", "-p", "0", "-P", "0", "-u", "icmp6", "-w", "in", "-A",
      "discard"},
     "src 2001:db8::/64 dst ::/0 proto ipv6-icmp \n"
     "\tdir in action block priority 0 ptype main \n",
     {"2001:db8::/64", "0", "::/0", "0", "icmp6", "in", "discard", "any", ""}},
};

std::vector<std::string> Words(const std::vector<std::string>& head,
                               const std::vector<std::string>& tail) {
    std::vector<std::string> words = head;
    words.insert(words.end(), tail.begin(), tail.end());
    return words;
}

class LiveIpsec : public Testing::LiveHostTest {
protected:
    void TearDown() override {
        if (!IsSkipped()) {
            Witness("ip xfrm policy flush && ip xfrm state flush");
        }
        LiveHostTest::TearDown();
    }

    static std::vector<std::string> PolicyRow(
        const std::shared_ptr<CppTools::MetaObj::MetaStruct>& row) {
        return {Str(row, "Source Address"),
                std::to_string(Int(row, "Source Port")),
                Str(row, "Destination Address"),
                std::to_string(Int(row, "Destination Port")),
                Str(row, "Protocol"),
                Str(row, "Flow"),
                Str(row, "Action"),
                Str(row, "Mode"),
                Str(row, "SA Name")};
    }

    // Whether this kernel takes ESP states: the witness tries it first.
    bool KernelTakesEsp() {
        const auto result = Testing::RunProgram("/bin/sh", {"-c", kIpStateAdd}, StateDirectory());
        if (result.status == 0) {
            Witness("ip xfrm state flush");
        }
        return result.status == 0;
    }
};

TEST_F(LiveIpsec, EachPolicyIsTheXfrmPolicyIpShows) {
    for (const PolicyCase& policy : kPolicies) {
        SCOPED_TRACE(policy.ip);
        RunOk(Words({"ip", "ipsec", "sp", "add", "-n", "swept policy"}, policy.options));
        EXPECT_EQ(Witness("ip xfrm policy"), policy.ip);
        const auto rows = Rows(RunList({"ip", "ipsec", "sp", "list"}));
        ASSERT_EQ(rows.size(), 1u);
        EXPECT_EQ(Str(rows[0], "Name"), "swept policy");
        EXPECT_EQ(PolicyRow(rows[0]), policy.row);
        RunOk({"ip", "ipsec", "sp", "remove", "-n", "swept policy"});
        EXPECT_EQ(Witness("ip xfrm policy"), "");
    }
}

// Policies made by others are listed without a name, those of IPv4 not at all; remove-all
// flushes them all.
TEST_F(LiveIpsec, PoliciesOfOthersAreListedNamelessAndFlushed) {
    Witness("ip xfrm policy add src 2001:db8:9::/64 dst ::/0 dir out action block");
    Witness("ip xfrm policy add src 192.0.2.0/24 dst 0.0.0.0/0 dir out action block");
    RunOk(Words({"ip", "ipsec", "sp", "add", "-n", "mine"}, kPolicies[0].options));
    std::vector<std::string> names;
    for (const auto& row : Rows(RunList({"ip", "ipsec", "sp", "list"}))) {
        names.push_back(Str(row, "Name") + "@" + Str(row, "Source Address"));
    }
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<std::string>{"@2001:db8:9::/64", "mine@2001:db8::/64"}));
    EXPECT_EQ(RunError({"ip", "ipsec", "sp", "remove", "-n", "other"}),
              "There is no security policy named other");
    RunOk({"ip", "ipsec", "sp", "remove", "-a"});
    EXPECT_EQ(Witness("ip xfrm policy"), "");
    EXPECT_TRUE(Rows(RunList({"ip", "ipsec", "sp", "list"})).empty());
}

// The names live beside the kernel's policies: private to root, and forgotten when the
// policy goes by other hands.
TEST_F(LiveIpsec, ANameLastsAsLongAsItsPolicy) {
    RunOk(Words({"ip", "ipsec", "sp", "add", "-n", "p1"}, kPolicies[0].options));
    EXPECT_EQ(RunError(Words({"ip", "ipsec", "sp", "add", "-n", "p1"}, kPolicies[2].options)),
              "Security policy p1 already exists");
    // The kernel's own words for a second policy of the same selector and direction.
    EXPECT_EQ(RunError(Words({"ip", "ipsec", "sp", "add", "-n", "p2"}, kPolicies[0].options)),
              "File exists");
    const std::string folder = Witness("ls /run/autocli/ipsec");
    struct stat names {};
    ASSERT_EQ(stat(("/run/autocli/ipsec/" + folder.substr(0, folder.find('\n'))).c_str(), &names),
              0);
    EXPECT_EQ(names.st_mode & 07777, 0600u);

    Witness("ip xfrm policy flush");
    RunOk(Words({"ip", "ipsec", "sp", "add", "-n", "p1"}, kPolicies[2].options));
    const auto rows = Rows(RunList({"ip", "ipsec", "sp", "list"}));
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(PolicyRow(rows[0]), kPolicies[2].row);
}

TEST_F(LiveIpsec, APolicyCanOnlyNameAnAssociationThatExists) {
    EXPECT_EQ(RunError(Words({"ip", "ipsec", "sp", "add", "-n", "p1", "-a", "nosa"},
                             kPolicies[1].options)),
              "There is no security association named nosa");
    EXPECT_EQ(Witness("ip xfrm policy"), "");
}

// A kernel without ESP refuses the association in its own words, with status 1; one with ESP
// holds it as the state ip xfrm shows.
TEST_F(LiveIpsec, AnAssociationIsAnEspStateOrTheKernelsRefusal) {
    if (!KernelTakesEsp()) {
        const auto result = LiveAutocli(Words({"network"}, kSaAdd));
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.err, "Protocol not supported: Requested type not found\n");
        EXPECT_EQ(Witness("ip xfrm state"), "");
        EXPECT_TRUE(Rows(RunList({"ip", "ipsec", "sa", "list"})).empty());
        return;
    }
    RunOk(kSaAdd);
    EXPECT_NE(Witness("ip xfrm state").find("spi 0x00001000"), std::string::npos);
    const auto rows = Rows(RunList({"ip", "ipsec", "sa", "list"}));
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(Str(rows[0], "Name"), "sa1");
    EXPECT_EQ(Str(rows[0], "SPI"), "0x1000");
    EXPECT_EQ(Str(rows[0], "Encryption Algorithm"), "aes128-cbc");
    EXPECT_EQ(Str(rows[0], "Integrity Algorithm"), "hmac-sha1");
    RunOk({"ip", "ipsec", "sa", "remove", "-n", "sa1"});
    EXPECT_EQ(Witness("ip xfrm state"), "");
}

TEST_F(LiveIpsec, RemovingAnAssociationThatIsNotThereIsRefused) {
    EXPECT_EQ(RunError({"ip", "ipsec", "sa", "remove", "-n", "sa9"}),
              "There is no security association named sa9");
    EXPECT_EQ(RunError({"ip", "ipsec", "sa", "remove", "-n", "auto", "-s", "2001:db8::1", "-d",
                        "2001:db8::2", "-p", "1000"}),
              "There is no automatic security association from 2001:db8::1 to 2001:db8::2 "
              "with SPI 0x1000");
    RunOk({"ip", "ipsec", "sa", "remove", "-a"});
}

TEST_F(LiveIpsec, EveryFaultOfTheIpsecCommandsEndsInAnError) {
    Witness("ip xfrm policy add src 2001:db8:9::/64 dst ::/0 dir out action block");
    SweepTable({
        {{"ip", "ipsec", "sp", "list"}, {"IpSecConfigImpl::GetSPDConfigList"}},
        {{"ip", "ipsec", "sa", "list"}, {"IpSecConfigImpl::GetSADConfigList"}},
        {Words({"ip", "ipsec", "sp", "add", "-n", "swept"}, kPolicies[0].options),
         {"IpSecConfigImpl::StringToIpSecAction", "IpSecConfigImpl::AddSPDConfig"}},
        {{"ip", "ipsec", "sp", "remove", "-a"}, {"IpSecConfigImpl::FlushSPDConfig"}},
        {{"ip", "ipsec", "sa", "remove", "-a"}, {"IpSecConfigImpl::FlushSADConfig"}},
    });
}

}  // namespace
