// Value types and string helpers of the host-control layer.
#include <gtest/gtest.h>

#include <arpa/inet.h>

#include <climits>
#include <random>

#include "hostctl/MacAddress.h"
#include "hostctl/Misc.h"
#include "hostsim/values/AddressText.h"

namespace {

using HostCtl::Network::MacAddress;

TEST(MacAddressTest, TextOfSixHexadecimalPairsIsValid) {
    for (const char* text : {"02:1a:2b:a1:00:0f", "FF:ff:00:Ab:cD:09", "00:00:00:00:00:00"}) {
        EXPECT_TRUE(MacAddress::IsValid(text)) << text;
    }
    for (const char* text :
         {"", "02:1a:2b:a1:00", "02:1a:2b:a1:00:0f:01", "02-1a-2b-a1-00-0f", "2:1a:2b:a1:00:0f0",
          "02:1a:2b:a1:00:0g", " 02:1a:2b:a1:00:0f", "02:1a:2b:a1:00:0f "}) {
        EXPECT_FALSE(MacAddress::IsValid(text)) << text;
    }
}

TEST(MacAddressTest, TextFormIsLowerCaseAndInvalidTextIsAllZeros) {
    MacAddress mac("02:1a:2b:AB:cd:0F");
    EXPECT_EQ(mac.GetStringAddress(), "02:1a:2b:ab:cd:0f");
    EXPECT_EQ(mac.GetBytes()[3], 0xab);
    EXPECT_EQ(mac, MacAddress("02:1a:2b:ab:cd:0f"));
    EXPECT_EQ(MacAddress("02:1a:2b:ab:cd").GetStringAddress(), "00:00:00:00:00:00");
    EXPECT_EQ(MacAddress("02:1a:2b:ab:cd"), MacAddress());
}

// The C library's inet_ntop is the witness: every kind of zero run, the embedded IPv4 forms and
// random addresses read the same.
TEST(AddressTextTest, Ipv6TextIsWhatInetNtopGives) {
    std::vector<std::string> texts{"::",
                                   "::1",
                                   "::2",
                                   "1::",
                                   "2001:db8::1",
                                   "2001:db8:0:1:0:0:0:1",
                                   "2001:0:0:1:0:0:0:1",
                                   "2001:db8:1:2:3:4:5:6",
                                   "2001:db8:0:2:3:4:5:6",
                                   "fe80::2:1ff:fe00:1",
                                   "::ffff:192.0.2.1",
                                   "::192.0.2.1",
                                   "::ffff:0:192.0.2.1",
                                   "0:0:0:0:0:1:0:1",
                                   "1:0:0:2:0:0:0:3",
                                   "ff02::1:ff00:1"};
    std::mt19937 random(7);
    for (int i = 0; i < 200; ++i) {
        in6_addr address{};
        for (auto& byte : address.s6_addr) {
            // Mostly zeros, so that runs of zero groups of every length come up.
            byte = random() % 3 == 0 ? static_cast<unsigned char>(random()) : 0;
        }
        char text[INET6_ADDRSTRLEN];
        texts.emplace_back(inet_ntop(AF_INET6, &address, text, sizeof text));
    }
    for (const std::string& text : texts) {
        in6_addr address{};
        ASSERT_EQ(inet_pton(AF_INET6, text.c_str(), &address), 1) << text;
        char expected[INET6_ADDRSTRLEN];
        inet_ntop(AF_INET6, &address, expected, sizeof expected);
        EXPECT_EQ(HostSim::Ipv6Text(address.s6_addr), expected) << text;
    }
}

TEST(StringHelpersTest, StrPrintfFormatsAnyLength) {
    EXPECT_EQ(HostCtl::Misc::StrPrintf("%u%s/%s", 25000u, "BaseCR1", "Full"), "25000BaseCR1/Full");
    EXPECT_EQ(HostCtl::Misc::StrPrintf("%s", ""), "");
    // Around the size formatted in one pass, and far beyond it.
    for (std::size_t length : {254, 255, 256, 257}) {
        const std::string text(length, 'y');
        EXPECT_EQ(HostCtl::Misc::StrPrintf("%s", text.c_str()), text) << length;
    }
    std::string longText(1000, 'x');
    EXPECT_EQ(HostCtl::Misc::StrPrintf("<%s>%d", longText.c_str(), INT_MIN),
              "<" + longText + ">" + std::to_string(INT_MIN));
}

TEST(StringHelpersTest, StrCatJoinsLiteralsStringsAndViews) {
    std::string name = "hwnic0";
    std::string_view view = "tail";
    EXPECT_EQ(HostCtl::Misc::StrCat("a", name, view), "ahwnic0tail");
    EXPECT_EQ(HostCtl::Misc::StrCat("There is no pnic with name ", name, "", "."),
              "There is no pnic with name hwnic0.");
    EXPECT_EQ(HostCtl::Misc::StrCat("1", "2", "3", "4", "5"), "12345");
    EXPECT_EQ(HostCtl::Misc::StrCat("1", "2", "3", "4", "5", std::string("6\0", 2)),
              std::string("123456\0", 7));
}

TEST(StringHelpersTest, StringTokenizeAppendsNonEmptyTokens) {
    std::vector<std::string> tokens{"kept"};
    HostCtl::Misc::StringTokenize("::USB-NIC:Acme::Fast Adapter:", tokens, ":");
    EXPECT_EQ(tokens, (std::vector<std::string>{"kept", "USB-NIC", "Acme", "Fast Adapter"}));
    tokens.clear();
    HostCtl::Misc::StringTokenize("hwnic0, hwnic1,,hwnic2", tokens, ", ");
    EXPECT_EQ(tokens, (std::vector<std::string>{"hwnic0", "hwnic1", "hwnic2"}));
    tokens.clear();
    HostCtl::Misc::StringTokenize(";;;", tokens, ";");
    HostCtl::Misc::StringTokenize("", tokens, ";");
    EXPECT_TRUE(tokens.empty());
}

}  // namespace
