// Profiles through the hostsim tool: init, export, import, reset and scale.
#include <fstream>
#include <set>
#include <span>
#include <string_view>

#include "HostSimTest.h"
#include "hostctl/HostCtlException.h"
#include "hostctl/MacAddress.h"
#include "hostsim/values/LocalMac.h"
#include "kelmctl/PnicImpl.h"

namespace HostSimTesting {
namespace {

using HostCtl::Network::MacAddress;
using ::testing::HasSubstr;

class ProfileTest : public HostTest {};

TEST_F(ProfileTest, ExportThenImportGivesBackTheSameHost) {
    KelmCtl::Network::PnicImpl("hwnic1").SetLinkState(false);
    KelmCtl::Network::PnicImpl("hwnic3").SetLinkState(true);
    HostSim::Json exported = ExportHost();
    EXPECT_EQ(exported["nics"][1]["adminUp"], false);
    std::string file = WriteProfile(exported);

    Testing::TemporaryDirectory other;
    auto imported = Testing::RunHostsim({"import", file}, other.Path());
    ASSERT_EQ(imported.status, 0) << imported.err;
    auto again = Testing::RunHostsim({"export"}, other.Path());
    EXPECT_EQ(HostSim::Json::parse(again.out), exported);

    HostSim::UseStateDirectory(other.Path());
    EXPECT_FALSE(KelmCtl::Network::PnicImpl("hwnic1").GetAdminStatus());
    EXPECT_TRUE(KelmCtl::Network::PnicImpl("hwnic3").GetAdminStatus());
}

// Every text of `value` that is a MAC address, with the path that leads to it.
void CollectMacs(const HostSim::Json& value, const std::string& path,
                 std::vector<std::pair<std::string, std::string>>& found) {
    if (value.is_string()) {
        const auto& text = value.get_ref<const std::string&>();
        if (MacAddress::IsValid(text)) {
            found.emplace_back(path, text);
        }
    } else if (value.is_array()) {
        for (std::size_t i = 0; i < value.size(); ++i) {
            CollectMacs(value[i], path + "/" + std::to_string(i), found);
        }
    } else if (value.is_object()) {
        for (const auto& [key, member] : value.items()) {
            CollectMacs(member, path + "/" + key, found);
        }
    }
}

TEST_F(ProfileTest, TheDefaultHostsUnicastAddressesAreLocalOrForDocumentation) {
    std::vector<std::pair<std::string, std::string>> macs;
    CollectMacs(ExportHost(), "", macs);
    std::size_t unicast = 0;
    for (const auto& [path, text] : macs) {
        const std::uint8_t first = MacAddress(text).GetBytes()[0];
        if ((first & 0x01) != 0) {
            continue;
        }
        ++unicast;
        EXPECT_TRUE(first == HostSim::kLocalMacFirstByte || text.starts_with("00:00:5e:00:53:"))
            << path << " " << text;
    }
    EXPECT_GT(unicast, 0u);
}

TEST_F(ProfileTest, TheDefaultHostsAddressesTellWhatHasThem) {
    const HostSim::Json host = ExportHost();
    std::set<HostSim::MacKind> seen;
    auto expectKind = [&seen](const HostSim::Json& mac, HostSim::MacKind kind) {
        EXPECT_TRUE(mac.get<std::string>().starts_with(HostSim::LocalMacPrefix(kind))) << mac;
        seen.insert(kind);
    };
    for (const auto& nic : host["nics"]) {
        expectKind(nic["mac"],
                   nic.contains("pci") ? HostSim::MacKind::PciNic : HostSim::MacKind::PseudoNic);
        if (nic["linkInfo"]["virtualAddress"] != "") {
            expectKind(nic["linkInfo"]["virtualAddress"], HostSim::MacKind::NicVirtualAddress);
        }
    }
    for (const auto& nic : host["kelmnics"]) {
        expectKind(nic["mac"], HostSim::MacKind::KelmInterface);
    }
    constexpr int kVmPort = 1;
    for (const auto& port : host["ports"]["ports"]) {
        if (port["type"] == kVmPort) {
            for (const auto& mac : port["macs"]) {
                expectKind(mac, HostSim::MacKind::VmPort);
            }
        }
    }
    for (const auto& instance : host["routing"]["netstacks"]) {
        for (const auto& neighbor : instance["neighbors"]) {
            expectKind(neighbor["mac"], HostSim::MacKind::Neighbor);
        }
    }
    EXPECT_EQ(seen.size(), 6u);
}

TEST_F(ProfileTest, AProfileCanBeImportedInProcess) {
    HostSim::ImportProfile(HostSim::Json{{"nics", {PciNic("hwnic3", PciMac(3))}}}.dump());
    EXPECT_EQ(AllNicNames(), std::vector<std::string>{"hwnic3"});
    EXPECT_THROW(HostSim::ImportProfile("{\"nics\": ["), HostCtl::Lib::HostCtlException);
    EXPECT_THROW(HostSim::ImportProfile("[]"), HostCtl::Lib::HostCtlException);
    EXPECT_EQ(AllNicNames(), std::vector<std::string>{"hwnic3"});
}

TEST_F(ProfileTest, AProfileFillsOutWhatItLeavesOut) {
    InitHost({"--profile=" + WriteProfile({{"nics", {PciNic("hwnic0", PciMac(1))}}})});
    HostSim::Json nic = ExportHost()["nics"][0];
    EXPECT_EQ(nic["adminUp"], true);
    EXPECT_EQ(nic["cableConnected"], true);
    EXPECT_EQ(nic["mtu"], 1500);
    EXPECT_EQ(nic["duplex"], 1);
    EXPECT_EQ(nic["driverInfo"]["busInfo"], "0000:04:00.0");
    EXPECT_EQ(nic["linkInfo"]["wakeOn"], HostSim::Json::array());
    EXPECT_EQ(nic["pause"]["supported"], false);
    EXPECT_FALSE(nic.contains("dpuId"));
}

TEST_F(ProfileTest, ScaleMakesRenumberedCopiesOfTheInventory) {
    InitHost({"--scale=3"});
    auto names = AllNicNames();
    ASSERT_EQ(names.size(), 33u);
    for (std::size_t i = 0; i < names.size(); ++i) {
        EXPECT_EQ(names[i], "hwnic" + std::to_string(i));
    }
    HostSim::Json nics = ExportHost()["nics"];
    std::set<std::string> macs, addresses;
    for (const auto& nic : nics) {
        macs.insert(nic["mac"].get<std::string>());
        if (nic.contains("pci")) {
            addresses.insert(nic["pci"]["address"].get<std::string>());
        }
    }
    EXPECT_EQ(macs.size(), 33u);
    EXPECT_EQ(addresses.size(), 24u);
    EXPECT_EQ(nics[24]["pci"]["address"], "0002:3b:00.0");
    // Copy 2 of hwnic2: its address with 2 × 256 added to the last three bytes.
    auto copied = MacAddress(nics[2]["mac"].get<std::string>()).GetBytes();
    copied[4] = static_cast<std::uint8_t>(copied[4] + 2);
    EXPECT_EQ(MacAddress(nics[24]["mac"].get<std::string>()).GetBytes(), copied);
    EXPECT_EQ(nics[24]["driverInfo"]["busInfo"], "0002:3b:00.0");
    EXPECT_EQ(nics[27]["dpuId"], nics[5]["dpuId"]);
}

// The values of `key` in every element of the arrays `path` leads to ("*" steps into each element).
std::vector<std::string> Collect(const HostSim::Json& value, std::span<const char* const> path,
                                 const char* key) {
    if (path.empty()) {
        return {value.at(key).dump()};
    }
    std::vector<std::string> values;
    const auto step = [&](const HostSim::Json& next) {
        for (auto& found : Collect(next, path.subspan(1), key)) {
            values.push_back(std::move(found));
        }
    };
    if (std::string_view(path[0]) == "*") {
        for (const auto& element : value) {
            step(element);
        }
    } else {
        step(value.at(path[0]));
    }
    return values;
}

TEST_F(ProfileTest, EveryScaleGivesAHostOfUniqueNamesThatExportsAndImportsAlike) {
    struct Case {
        unsigned scale;
        std::size_t nics, portGroups, kelmNics, routes, ensMaximum, ensContexts;
    };
    // The host allows at most 256 ENS contexts: copies past that limit bring none. Security
    // associations named "auto" share their name; their SPIs tell them apart.
    const Case cases[] = {
        {.scale = 1,
         .nics = 11,
         .portGroups = 6,
         .kelmNics = 4,
         .routes = 10,
         .ensMaximum = 8,
         .ensContexts = 4},
        {.scale = 2,
         .nics = 22,
         .portGroups = 12,
         .kelmNics = 8,
         .routes = 20,
         .ensMaximum = 16,
         .ensContexts = 8},
        {.scale = 10,
         .nics = 110,
         .portGroups = 60,
         .kelmNics = 40,
         .routes = 100,
         .ensMaximum = 80,
         .ensContexts = 40},
        {.scale = 112,
         .nics = 1232,
         .portGroups = 672,
         .kelmNics = 448,
         .routes = 1120,
         .ensMaximum = 256,
         .ensContexts = 256},
    };
    struct Unique {
        std::vector<const char*> path;
        const char* key;
    };
    const Unique uniques[] = {{{"nics", "*"}, "name"},
                              {{"nics", "*"}, "mac"},
                              {{"vswitches", "*"}, "name"},
                              {{"vswitches", "*", "portGroups", "*"}, "name"},
                              {{"dvswitches", "*"}, "name"},
                              {{"dvswitches", "*"}, "id"},
                              {{"kelmnics", "*"}, "name"},
                              {{"kelmnics", "*"}, "mac"},
                              {{"kelmnics", "*"}, "portId"},
                              {{"ports", "worlds", "*"}, "id"},
                              {{"ports", "worlds", "*"}, "name"},
                              {{"ports", "ports", "*"}, "id"},
                              {{"ens", "lcores", "*"}, "id"},
                              {{"ipsec", "securityAssociations", "*"}, "spi"},
                              {{"ipsec", "securityPolicies", "*"}, "name"}};
    for (const Case& test : cases) {
        SCOPED_TRACE("scale " + std::to_string(test.scale));
        InitHost({"--scale=" + std::to_string(test.scale)});
        const HostSim::Json host = ExportHost();
        EXPECT_EQ(host["nics"].size(), test.nics);
        EXPECT_EQ(Collect(host, std::vector{"vswitches", "*", "portGroups", "*"}, "name").size(),
                  test.portGroups);
        EXPECT_EQ(host["kelmnics"].size(), test.kelmNics);
        EXPECT_EQ(Collect(host, std::vector{"routing", "netstacks", "*", "routes", "*"}, "network")
                      .size(),
                  test.routes);
        EXPECT_EQ(host["ens"]["maxLcores"], test.ensMaximum);
        EXPECT_EQ(host["ens"]["lcores"].size(), test.ensContexts);
        for (const Unique& unique : uniques) {
            const auto values = Collect(host, unique.path, unique.key);
            EXPECT_EQ(std::set<std::string>(values.begin(), values.end()).size(), values.size())
                << unique.path[0] << " " << unique.key;
        }
        Testing::TemporaryDirectory other;
        auto imported = Testing::RunHostsim({"import", WriteProfile(host)}, other.Path());
        ASSERT_EQ(imported.status, 0) << imported.err;
        EXPECT_EQ(HostSim::Json::parse(Testing::RunHostsim({"export"}, other.Path()).out), host);
    }
}

TEST_F(ProfileTest, ScaledMacAddressesStayApartBeyond256Copies) {
    InitHost({"--profile=" + WriteProfile({{"nics", {PciNic("hwnic0", PciMac(0xffff07))}}}),
              "--scale=300"});
    HostSim::Json host = ExportHost();
    std::set<std::string> macs;
    for (const auto& nic : host["nics"]) {
        macs.insert(nic["mac"].get<std::string>());
    }
    EXPECT_EQ(macs.size(), 300u);
    EXPECT_EQ(macs.count(PciMac(7)), 1u);
}

TEST_F(ProfileTest, ScaleStridesSkipTheGapsOfAProfile) {
    std::string file = WriteProfile({{"nics",
                                      {PciNic("hwnic0", PciMac(0)), PciNic("hwnic4", PciMac(4)),
                                       PseudoNic("usbnic", PseudoMac(9), "USB-NIC:a:b")}}});
    auto result = Testing::RunHostsim({"init", "--profile=" + file, "--scale=2"}, Directory());
    // "usbnic" has no number to renumber, so its copy has the same name.
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.err, HasSubstr("more than one NIC named usbnic"));
    EXPECT_EQ(AllNicNames().size(), 11u);

    InitHost({"--profile=" + file});
    InitHost(
        {"--profile=" +
             WriteProfile({{"nics", {PciNic("hwnic0", PciMac(0)), PciNic("hwnic4", PciMac(4))}}}),
         "--scale=3"});
    EXPECT_EQ(AllNicNames(), (std::vector<std::string>{"hwnic0", "hwnic4", "hwnic5", "hwnic9",
                                                       "hwnic10", "hwnic14"}));
}

TEST_F(ProfileTest, ResetMakesTheHostAgainFromItsProfileAndScale) {
    std::string file = WriteProfile({{"nics", {PciNic("hwnic0", PciMac(0))}}});
    InitHost({"--profile=" + file, "--scale=2"});
    KelmCtl::Network::PnicImpl("hwnic1").SetLinkState(false);
    auto result = Testing::RunHostsim({"reset"}, Directory());
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(AllNicNames(), (std::vector<std::string>{"hwnic0", "hwnic1"}));
    EXPECT_TRUE(KelmCtl::Network::PnicImpl("hwnic1").GetAdminStatus());

    InitHost({"--profile=default", "--scale=2"});
    KelmCtl::Network::PnicImpl("hwnic17").SetLinkState(false);
    ASSERT_EQ(Testing::RunHostsim({"reset"}, Directory()).status, 0);
    EXPECT_EQ(AllNicNames().size(), 22u);
    EXPECT_TRUE(KelmCtl::Network::PnicImpl("hwnic17").GetAdminStatus());
}

TEST_F(ProfileTest, AProfileThatCantBeTakenLeavesTheHostAsItWas) {
    KelmCtl::Network::PnicImpl("hwnic0").SetLinkState(false);
    HostSim::Json before = ExportHost();
    struct Case {
        HostSim::Json profile;
        std::string words;
    };
    auto noSpeed = PciNic("hwnic1", PciMac(1));
    noSpeed.erase("speed");
    std::vector<Case> cases{
        {{{"nics", {PciNic("hwnic0", "02:01:00:00:00")}}},
         "invalid MAC address \"02:01:00:00:00\""},
        {{{"nics", {PciNic("hwnic0", PciMac(0)), PciNic("hwnic0", PciMac(1))}}},
         "more than one NIC named hwnic0"},
        {{{"nics", {PciNic("hwnic0", PciMac(0)), noSpeed}}}, "Section \"nics\""},
        {{{"switches", HostSim::Json::array()}}, "Unknown section \"switches\""},
        {HostSim::Json::array(), "must be a JSON object"},
    };
    for (const Case& test : cases) {
        auto result = Testing::RunHostsim({"import", WriteProfile(test.profile)}, Directory());
        EXPECT_EQ(result.status, 1) << test.profile;
        EXPECT_THAT(result.err, HasSubstr(test.words));
    }
    auto notJson = WriteProfile(HostSim::Json::object());
    std::ofstream(notJson) << "{\"nics\": [";
    EXPECT_THAT(Testing::RunHostsim({"import", notJson}, Directory()).err,
                HasSubstr("is not valid JSON"));
    EXPECT_EQ(ExportHost(), before);
}

TEST_F(ProfileTest, TheToolRefusesAWrongCommandLine) {
    for (const std::vector<std::string>& line : {std::vector<std::string>{"init", "--scale=0"},
                                                 {"init", "--scale=3x"},
                                                 {"init", "--colour=red"},
                                                 {"import"},
                                                 {"export", "extra"},
                                                 {"frobnicate"},
                                                 {}}) {
        auto result = Testing::RunHostsim(line, Directory());
        EXPECT_EQ(result.status, 2) << ::testing::PrintToString(line);
    }
    auto help = Testing::RunHostsim({"--help"}, Directory());
    EXPECT_EQ(help.status, 0);
    EXPECT_THAT(help.out, HasSubstr("init [--profile=default|empty|FILE.json] [--scale=N]"));
    auto missing = Testing::RunHostsim({"import", Directory() + "/none.json"}, Directory());
    EXPECT_EQ(missing.status, 1);
    EXPECT_THAT(missing.err, HasSubstr("Unable to read the profile"));
}

}  // namespace
}  // namespace HostSimTesting
