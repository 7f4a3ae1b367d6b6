// `nic eeprom dump|change`, `nic register dump`, `nic selftest run` and
// `nic negotiate restart`: the row layouts and the host's rules.
#include <fstream>

#include "nic/NicDeviceTest.h"

namespace {

using NicDeviceTesting::NicDeviceTest;
using NicDeviceTesting::Words;
using Testing::Rows;
using Testing::Str;

using Pairs = std::vector<std::pair<std::string, std::string>>;

constexpr char kMagic[] = "439026512";

class NicDiagnosticsTest : public NicDeviceTest {
protected:
    // hwnic7 with an EEPROM of `bytes` bytes 00, 01, 02... and `registers`.
    void UseDiagnostics(unsigned bytes, const std::vector<std::uint32_t>& registers) {
        std::string hex;
        for (unsigned i = 0; i < bytes; ++i) {
            char digits[3];
            std::snprintf(digits, sizeof(digits), "%02x", i & 0xffu);
            hex += digits;
        }
        UseDevice(
            {{"nic", "hwnic7"},
             {"diagnostics", {{"eepromMagic", 7}, {"eeprom", hex}, {"registers", registers}}}});
    }
    Pairs Dump(const Words& extra) {
        Words words{"nic", "eeprom", "dump", "-n", "hwnic7"};
        words.insert(words.end(), extra.begin(), extra.end());
        return Column(words, "Offset", "Value");
    }
};

TEST_F(NicDiagnosticsTest, EepromRowsAlignToTheirAddresses) {
    UseDiagnostics(0x40, {});
    const std::vector<std::pair<Words, Pairs>> cases = {
        {{"-o", "0", "-l", "32"},
         {{"0000", "00 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f "},
          {"0010", "10 11 12 13 14 15 16 17 18 19 1a 1b 1c 1d 1e 1f "}}},
        {{"-o", "37", "-l", "3"}, {{"0020", std::string(15, ' ') + "25 26 27 "}}},
        {{"-o", "47", "-l", "2"}, {{"0020", std::string(45, ' ') + "2f "}, {"0030", "30 "}}},
        {{"-o", "60"}, {{"0030", std::string(36, ' ') + "3c 3d 3e 3f "}}},
    };
    for (const auto& [extra, rows] : cases) {
        EXPECT_EQ(Dump(extra), rows) << ::testing::PrintToString(extra);
    }
    EXPECT_EQ(RunError({"nic", "eeprom", "dump", "-n", "hwnic7", "-o", "64"}),
              "Offset 0x40 is past the end of the EEPROM of NIC hwnic7 (64 bytes)");
}

TEST_F(NicDiagnosticsTest, LargeOffsetsPrintWithMoreDigits) {
    UseDiagnostics(0x10010, {});
    EXPECT_EQ(Dump({"-o", "65537", "-l", "1"}), (Pairs{{"10000", "   01 "}}));
}

TEST_F(NicDiagnosticsTest, RegisterWordsAreNotPadded) {
    std::vector<std::uint32_t> words(17, 0);
    words[0] = 0x5;
    words[1] = 0x12345;
    words[16] = 0xdeadbeef;
    UseDiagnostics(16, words);
    auto rows = Column({"nic", "register", "dump", "-n", "hwnic7"}, "Offset", "Value");
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[0].first, "0000");
    EXPECT_EQ(rows[0].second.substr(0, 12), "05 12345 00 ");
    EXPECT_EQ(rows[1], (std::pair<std::string, std::string>{"0010", "deadbeef "}));
    EXPECT_EQ(RunError({"nic", "register", "dump", "-n", "hwnic3"}),
              "NIC hwnic3 does not support register dumps");
}

TEST_F(NicDiagnosticsTest, EepromChangeWritesOneDoubleWord) {
    Change(
        {"nic", "eeprom", "change", "-n", "hwnic0", "-m", kMagic, "-o", "16", "-v", "305419896"});
    EXPECT_EQ(
        Column({"nic", "eeprom", "dump", "-n", "hwnic0", "-o", "16", "-l", "4"}, "Offset", "Value"),
        (Pairs{{"0010", "78 56 34 12 "}}));
}

TEST_F(NicDiagnosticsTest, EepromChangeRefusalsLeaveTheEepromAlone) {
    const Pairs before = Column({"nic", "eeprom", "dump", "-n", "hwnic0"}, "Offset", "Value");
    const std::vector<std::pair<Words, std::string>> cases = {
        {{"-n", "hwnic0", "-m", "1", "-o", "16", "-v", "1"},
         "Wrong EEPROM magic 0x1 for NIC hwnic0"},
        {{"-n", "hwnic0", "-m", kMagic, "-o", "253", "-v", "1"},
         "Offset 0xfd is past the end of the EEPROM of NIC hwnic0 (256 bytes)"},
        {{"-n", "hwnic0", "-m", kMagic, "-o", "16"},
         "Need to specify atleast one of --offset, --value or --file"},
        {{"-n", "hwnic0", "-m", kMagic},
         "Need to specify atleast one of --offset, --value or --file"},
        {{"-n", "hwnic0", "-m", kMagic, "-f", "/x", "-v", "1"},
         "Parameter --file can't be specified together with --offset and --value"},
        {{"-n", "hwnic0", "-m", kMagic, "-f", "/nonexistent/eeprom.bin"},
         "Unable to read EEPROM image file /nonexistent/eeprom.bin"},
        {{"-n", "hwnic99", "-m", "1", "-f", "/x", "-v", "1"}, "Pnic with name hwnic99 not found"},
        {{"-n", "hwnic3", "-m", kMagic, "-o", "0", "-v", "1"},
         "NIC hwnic3 does not support EEPROM access"},
    };
    for (const auto& [extra, message] : cases) {
        Words words{"nic", "eeprom", "change"};
        words.insert(words.end(), extra.begin(), extra.end());
        EXPECT_EQ(RunError(words), message) << ::testing::PrintToString(words);
    }
    EXPECT_EQ(Column({"nic", "eeprom", "dump", "-n", "hwnic0"}, "Offset", "Value"), before);
}

TEST_F(NicDiagnosticsTest, EepromChangeFromAFileTheHostReads) {
    const Words dump{"nic", "eeprom", "dump", "-n", "hwnic0", "-l", "8"};
    const Pairs before = Column(dump, "Offset", "Value");
    ASSERT_EQ(before.size(), 1u);
    const std::string file = StateDirectory() + "/image.bin";
    std::ofstream(file, std::ios::binary) << "\x01\x02\x03";
    Change({"nic", "eeprom", "change", "-n", "hwnic0", "-m", kMagic, "-f", file});
    // The file's three bytes replace the first three; the rest stays as it was.
    EXPECT_EQ(Column(dump, "Offset", "Value"),
              (Pairs{{"0000", "01 02 03 " + before.front().second.substr(9)}}));
}

TEST_F(NicDiagnosticsTest, SelfTestGivesTheResultFirstAndTheDriversLines) {
    auto offline = Column({"nic", "selftest", "run", "-n", "hwnic1"}, "Item", "Value");
    ASSERT_EQ(offline.size(), 6u);
    EXPECT_EQ(offline[0], (std::pair<std::string, std::string>{"Result", "Failed"}));
    EXPECT_EQ(offline[4],
              (std::pair<std::string, std::string>{"Info", "Loopback test     (offline)  1"}));
    EXPECT_EQ(Column({"nic", "selftest", "run", "-n", "hwnic1", "-o", "0"}, "Item", "Value"),
              offline);
    EXPECT_EQ(Column({"nic", "selftest", "run", "-n", "hwnic1", "-o", "1"}, "Item", "Value"),
              (Pairs{{"Result", "Passed"}, {"Info", "Link test         (on/offline)  0"}}));
    UseDevice({{"nic", "hwnic7"}, {"diagnostics", {{"selfTest", {{"failed", false}}}}}});
    EXPECT_EQ(Column({"nic", "selftest", "run", "-n", "hwnic7"}, "Item", "Value"),
              (Pairs{{"Result", "Passed"}}));
    EXPECT_EQ(RunError({"nic", "selftest", "run", "-n", "hwnic8"}),
              "NIC hwnic8 does not support self tests");
}

TEST_F(NicDiagnosticsTest, NegotiationNeedsAutoNegotiationAndTheNicUp) {
    Change({"nic", "negotiate", "restart", "-n", "hwnic0"});
    EXPECT_EQ(RunError({"nic", "negotiate", "restart", "-n", "hwnic2"}),
              "Auto-negotiation is off on NIC hwnic2");
    Change({"nic", "down", "-n", "hwnic0"});
    EXPECT_EQ(RunError({"nic", "negotiate", "restart", "-n", "hwnic0"}),
              "NIC hwnic0 is down; bring it up to negotiate");
    EXPECT_EQ(RunError({"nic", "negotiate", "restart", "-n", "hwnic99"}),
              "Pnic with name hwnic99 not found");
}

}  // namespace
