// The resolver configuration, the hosts file and the IPv6 switch on the live host. The files
// are the test's own: /etc is an overlay of the test's mount namespace, and each test puts the
// files back as they were. Every change is checked byte for byte, lines the tool did not make
// included.
#include <sys/stat.h>

#include <fstream>
#include <sstream>

#include "support/LiveHostTest.h"

namespace {

using Testing::Rows;
using Testing::Str;
using Testing::Strings;

constexpr char kResolver[] = "/etc/resolv.conf";
constexpr char kHosts[] = "/etc/hosts";
constexpr char kBegin[] = "# BEGIN entries of autocli network ip hosts\n";
constexpr char kEnd[] = "# END entries of autocli network ip hosts\n";

std::optional<std::string> ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        return std::nullopt;
    }
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

void WriteFile(const std::string& path, const std::string& text) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << text;
    ASSERT_TRUE(file.good()) << path;
}

class LiveNameService : public Testing::LiveHostTest {
protected:
    void SetUp() override {
        LiveHostTest::SetUp();
        if (IsSkipped() || HasFatalFailure()) {
            return;
        }
        for (const char* path : {kResolver, kHosts}) {
            saved_[path] = ReadFile(path);
        }
        for (const char* scope : {"all", "default"}) {
            switches_[scope] = Switch(scope);
        }
    }

    void TearDown() override {
        for (const auto& [path, text] : saved_) {
            if (text) {
                WriteFile(path, *text);
            } else {
                std::remove(path.c_str());
            }
        }
        for (const auto& [scope, value] : switches_) {
            Witness("sysctl -q -w net.ipv6.conf." + scope + ".disable_ipv6=" + value);
        }
        Witness("rm -rf /etc/netns; ip netns del lab 2>/dev/null; true");
        LiveHostTest::TearDown();
    }

    std::string Switch(const std::string& scope) {
        std::string value = Witness("sysctl -n net.ipv6.conf." + scope + ".disable_ipv6");
        return value.substr(0, value.find('\n'));
    }

    // The command's error messages; the changing DNS commands leave a true root beside them.
    std::vector<std::string> Errors(const std::vector<std::string>& words) {
        const auto result = Run(words);
        EXPECT_NE(result.output, nullptr);
        return result.output ? result.output->GetErrorMessages() : std::vector<std::string>{};
    }

    std::map<std::string, std::optional<std::string>> saved_;
    std::map<std::string, std::string> switches_;
};

struct ResolverCase {
    const char* file;
    std::vector<std::string> servers;
    std::vector<std::string> domains;
};

// What the resolver reads: server lines in order, in the kernel's address form; the domains of
// the last search or domain line; a keyword only at the start of a line.
const ResolverCase kResolverCases[] = {
    {"nameserver 192.0.2.1\nnameserver 2001:DB8:0::53\n", {"192.0.2.1", "2001:db8::53"}, {}},
    {"# comment\nsearch a.example b.example\noptions ndots:2\n", {}, {"a.example", "b.example"}},
    {"domain x.example\nsearch y.example z.example # old\n", {}, {"y.example", "z.example"}},
    {"search y.example\ndomain x.example", {}, {"x.example"}},
    {"nameserver\tfe80::1%eth0\n; nameserver 192.0.2.2\n nameserver 192.0.2.3\n",
     {"fe80::1%eth0"},
     {}},
    {"", {}, {}},
};

TEST_F(LiveNameService, ServersAndDomainsAreReadAsTheResolverReadsThem) {
    for (const ResolverCase& wanted : kResolverCases) {
        SCOPED_TRACE(wanted.file);
        WriteFile(kResolver, wanted.file);
        EXPECT_EQ(Strings(RunStruct({"ip", "dns", "server", "list"}), "DNS Servers"),
                  wanted.servers);
        EXPECT_EQ(Strings(RunStruct({"ip", "dns", "search", "list"}), "DNS Search Domains"),
                  wanted.domains);
    }
}

struct ChangeCase {
    const char* before;
    std::vector<std::string> words;
    const char* after;
};

// Each change touches only the lines of what it changes; comments, options, the other lines
// and a missing final newline stay.
const ChangeCase kChangeCases[] = {
    {"# made by hand\nnameserver 192.0.2.1\noptions ndots:2\nsearch a.example",
     {"ip", "dns", "server", "remove", "-s", "192.0.2.1"},
     "# made by hand\noptions ndots:2\nsearch a.example"},
    {"nameserver 192.0.2.1 # first\nnameserver 192.0.2.2\nnameserver 192.0.2.3\n",
     {"ip", "dns", "server", "remove", "-s", "192.0.2.2"},
     "nameserver 192.0.2.1 # first\nnameserver 192.0.2.3\n"},
    {"nameserver 2001:db8:0:0::1\n# keep\nnameserver 192.0.2.2\n",
     {"ip", "dns", "server", "remove", "-s", "2001:db8::1"},
     "# keep\nnameserver 192.0.2.2\n"},
    {"nameserver 192.0.2.1\n# keep\nnameserver 192.0.2.2\noptions rotate\n",
     {"ip", "dns", "server", "remove", "-a"},
     "# keep\noptions rotate\n"},
    {"domain old.example\n# keep\nsearch a.example\noptions ndots:1\n",
     {"ip", "dns", "search", "add", "-d", "b.example"},
     "domain old.example\n# keep\nsearch a.example b.example\noptions ndots:1\n"},
    {"nameserver 192.0.2.1\n",
     {"ip", "dns", "search", "add", "-d", "a.example"},
     "nameserver 192.0.2.1\nsearch a.example\n"},
    {"domain old.example\nsearch a.example b.example\n",
     {"ip", "dns", "search", "remove", "-d", "a.example"},
     "domain old.example\nsearch b.example\n"},
    {"domain old.example\nnameserver 192.0.2.1\nsearch a.example\n",
     {"ip", "dns", "search", "remove", "-d", "a.example"},
     "nameserver 192.0.2.1\n"},
};

TEST_F(LiveNameService, ChangesRewriteOnlyTheirOwnLines) {
    for (const ChangeCase& change : kChangeCases) {
        SCOPED_TRACE(::testing::PrintToString(change.words));
        WriteFile(kResolver, change.before);
        EXPECT_TRUE(Errors(change.words).empty());
        EXPECT_EQ(ReadFile(kResolver), change.after);
    }
}

// The file is replaced, not written over: a new inode, with the old one's mode.
TEST_F(LiveNameService, AChangeRenamesANewFileWithTheOldModeOverTheOld) {
    WriteFile(kResolver, "nameserver 192.0.2.1\n");
    ASSERT_EQ(chmod(kResolver, 0640), 0);
    struct stat before {};
    ASSERT_EQ(stat(kResolver, &before), 0);
    RunOk({"ip", "dns", "search", "add", "-d", "a.example"});
    struct stat after {};
    ASSERT_EQ(stat(kResolver, &after), 0);
    EXPECT_NE(after.st_ino, before.st_ino);
    EXPECT_EQ(after.st_mode & 07777, 0640u);
    EXPECT_EQ(Witness("ls -a /etc | grep -c 'resolv.conf' || true"), "1\n");
}

TEST_F(LiveNameService, ARefusedChangeLeavesTheFileAsItWas) {
    const std::string text = "nameserver 192.0.2.1\nsearch a.example\n";
    WriteFile(kResolver, text);
    EXPECT_EQ(Errors({"ip", "dns", "server", "remove", "-s", "192.0.2.9"}),
              std::vector<std::string>{
                  "DNS server 192.0.2.9 is not in the list of netstack defaultTcpipStack"});
    EXPECT_EQ(Errors({"ip", "dns", "search", "add", "-d", "a.example"}),
              std::vector<std::string>{"Search domain a.example is already in the search list "
                                       "of netstack defaultTcpipStack"});
    EXPECT_EQ(ReadFile(kResolver), text);
}

// A named netstack reads the default file while it has none of its own, as its processes do;
// its first change makes its own from that one, and the default file stays.
TEST_F(LiveNameService, ANamedNetstackHasAFileOfItsOwnUnderEtcNetns) {
    const std::string text = "# host\nnameserver 192.0.2.1\n";
    WriteFile(kResolver, text);
    Witness("ip netns add lab");
    EXPECT_EQ(Strings(RunStruct({"ip", "dns", "server", "list", "-N", "lab"}), "DNS Servers"),
              std::vector<std::string>{"192.0.2.1"});
    RunOk({"ip", "dns", "server", "add", "-N", "lab", "-s", "2001:db8::53"});
    EXPECT_EQ(ReadFile("/etc/netns/lab/resolv.conf"), text + "nameserver 2001:db8::53\n");
    EXPECT_EQ(ReadFile(kResolver), text);
    EXPECT_EQ(Strings(RunStruct({"ip", "dns", "server", "list", "-N", "lab"}), "DNS Servers"),
              (std::vector<std::string>{"192.0.2.1", "2001:db8::53"}));
    // What a process of the namespace sees, as ip netns exec lays the file over /etc.
    EXPECT_EQ(Witness("ip netns exec lab cat /etc/resolv.conf"),
              text + "nameserver 2001:db8::53\n");
    EXPECT_EQ(RunError({"ip", "dns", "server", "list", "-N", "nolab"}),
              "There is no netstack instance nolab");
}

TEST_F(LiveNameService, HostsEntriesGoInTheToolsBlockAndTheFileComesBackWhole) {
    const std::string original =
        "127.0.0.1\tlocalhost\n# the administrator's\n192.0.2.10\tbuild1\n::1 localhost6";
    WriteFile(kHosts, original);
    EXPECT_TRUE(Rows(RunList({"ip", "hosts", "list"})).empty());

    RunOk({"ip", "hosts", "add", "-I", "192.0.2.10", "-H", "build1", "-A", "b1", "-A", "b1.example",
           "-C", "the build server"});
    RunOk({"ip", "hosts", "add", "-I", "2001:DB8::0:1", "-H", "v6host"});
    EXPECT_EQ(ReadFile(kHosts), original + "\n" + kBegin +
                                    "192.0.2.10\tbuild1 b1 b1.example\t# the build server\n"
                                    "2001:db8::1\tv6host\n" +
                                    kEnd);
    const auto rows = Rows(RunList({"ip", "hosts", "list"}));
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(Str(rows[0], "IP address"), "192.0.2.10");
    EXPECT_EQ(Str(rows[0], "HostName"), "build1");
    EXPECT_EQ(Strings(rows[0], "Aliases"), (std::vector<std::string>{"b1", "b1.example"}));
    EXPECT_EQ(Str(rows[0], "Comment"), "the build server");
    EXPECT_EQ(Str(rows[1], "IP address"), "2001:db8::1");
    EXPECT_EQ(Strings(rows[1], "Aliases"), std::vector<std::string>{});
    EXPECT_EQ(Str(rows[1], "Comment"), "");

    RunOk({"ip", "hosts", "remove", "-I", "192.0.2.10", "-H", "build1"});
    RunOk({"ip", "hosts", "remove", "-I", "2001:db8::1", "-H", "v6host"});
    // The block goes with its last entry; the file gained only the final newline it lacked.
    EXPECT_EQ(ReadFile(kHosts), original + "\n");
}

TEST_F(LiveNameService, OnlyTheToolsOwnEntriesAreListedAndRemoved) {
    const std::string original = std::string("192.0.2.10 build1\n") + kBegin +
                                 "# kept\n192.0.2.11   by-hand alias # written by hand\n" + kEnd +
                                 "192.0.2.12 after\n";
    WriteFile(kHosts, original);
    const auto rows = Rows(RunList({"ip", "hosts", "list"}));
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(Str(rows[0], "HostName"), "by-hand");
    EXPECT_EQ(Strings(rows[0], "Aliases"), std::vector<std::string>{"alias"});
    EXPECT_EQ(Str(rows[0], "Comment"), "written by hand");

    EXPECT_EQ(RunError({"ip", "hosts", "remove", "-I", "192.0.2.10", "-H", "build1"}),
              "Error removing etc host item:The hosts file has no entry mapping 192.0.2.10 to "
              "build1");
    EXPECT_EQ(RunError({"ip", "hosts", "add", "-I", "192.0.2.11", "-H", "by-hand"}),
              "Error adding etc host item:The hosts file already maps 192.0.2.11 to by-hand");
    EXPECT_EQ(ReadFile(kHosts), original);

    RunOk({"ip", "hosts", "remove", "-I", "192.0.2.11", "-H", "by-hand"});
    // The comment inside the block stays, and with it the block.
    EXPECT_EQ(ReadFile(kHosts), std::string("192.0.2.10 build1\n") + kBegin + "# kept\n" + kEnd +
                                    "192.0.2.12 after\n");
    RunOk({"ip", "hosts", "add", "-I", "192.0.2.13", "-H", "new"});
    EXPECT_EQ(ReadFile(kHosts), std::string("192.0.2.10 build1\n") + kBegin +
                                    "# kept\n192.0.2.13\tnew\n" + kEnd + "192.0.2.12 after\n");
}

// The switch is the disable_ipv6 setting of every link ("all") and of links yet to come
// ("default").
TEST_F(LiveNameService, TheIpv6SwitchIsTheDisableIpv6Settings) {
    RunOk({"ip", "set", "-e", "false"});
    EXPECT_EQ(Switch("all"), "1");
    EXPECT_EQ(Switch("default"), "1");
    EXPECT_EQ(Switch("lo"), "1");
    EXPECT_FALSE(Testing::Bool(RunStruct({"ip", "get"}), "IPv6 Enabled"));
    RunOk({"ip", "set", "-e", "true"});
    EXPECT_EQ(Switch("all"), "0");
    EXPECT_EQ(Switch("default"), "0");
    EXPECT_TRUE(Testing::Bool(RunStruct({"ip", "get"}), "IPv6 Enabled"));
    Witness("sysctl -q -w net.ipv6.conf.default.disable_ipv6=1");
    EXPECT_FALSE(Testing::Bool(RunStruct({"ip", "get"}), "IPv6 Enabled"));
}

TEST_F(LiveNameService, EveryFaultOfTheNameServiceCommandsEndsInAnError) {
    WriteFile(kResolver, "nameserver 192.0.2.1\nsearch a.example\n");
    WriteFile(kHosts, "127.0.0.1 localhost\n");
    Witness("ip netns add lab");
    const SweepRules changing = {
        .handledOperations = {},
        .escapingOperations = {"DnsConfigImpl::DnsConfigImpl"},
        .rootMayStay = true,
    };
    SweepTable({
        {{"ip", "dns", "server", "list"},
         {"DnsConfigImpl::GetNameServers"},
         {.escapingOperations = {"DnsConfigImpl::DnsConfigImpl"}}},
        {{"ip", "dns", "search", "list"},
         {"DnsConfigImpl::GetSearchDomainsString"},
         {.escapingOperations = {"DnsConfigImpl::DnsConfigImpl"}}},
        {{"ip", "dns", "server", "add", "-N", "lab", "-s", "192.0.2.53"},
         {"DnsConfigImpl::AddUserNameServer", "DnsConfigImpl::SaveConfig"},
         changing},
        {{"ip", "dns", "server", "remove", "-a"},
         {"DnsConfigImpl::RemoveNameServers", "DnsConfigImpl::SaveConfig"},
         changing},
        {{"ip", "dns", "search", "add", "-d", "b.example"},
         {"DnsConfigImpl::AddUserSearchDomain", "DnsConfigImpl::SaveConfig"},
         changing},
        {{"ip", "hosts", "list"}, {"HostsFile::HostsFile", "HostsFile::GetEntriesFromConfig"}},
        {{"ip", "hosts", "add", "-I", "192.0.2.20", "-H", "swept"},
         {"HostsFile::HostsFile", "HostsFile::AddEntryFromUser"}},
        {{"ip", "get"}, {"NetworkInfoImpl::IsKelmIpv6Enabled"}},
        {{"ip", "set", "-e", "false"}, {"NetworkInfoImpl::SetKelmIpv6Enabled"}},
    });
}

}  // namespace
