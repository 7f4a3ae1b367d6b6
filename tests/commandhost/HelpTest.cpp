// Help for the program, namespaces and commands, with %ENUM% and %FULLENUM% expanded.
#include "commandhost/HostFixture.h"
#include "commandhost/cli/Help.h"

namespace CommandHostTesting {
namespace {

using HelpTest = HostTest;

TEST_F(HelpTest, TheRootListsTheOptionsAndNamespaces) {
    ASSERT_EQ(Main({}), CommandHost::ExitOk);
    EXPECT_EQ(out_,
              "Usage: autocli [options] <namespace> ... <command> [parameters]\n"
              "\n"
              "Options:\n"
              "  --host=sim|linux  Act on the simulated host (sim, the default, its state in\n"
              "                    HOSTSIM_DIR) or on this machine's kernel (linux), in the\n"
              "                    network namespace autocli runs in; AUTOCLI_HOST chooses when\n"
              "                    this is not given.\n"
              "  --formatter=NAME  Print the result with the formatter NAME instead of the\n"
              "                    command's default.\n"
              "  --plugin-dir=DIR  Load the plug-ins (lib*.so) from DIR instead of\n"
              "                    AUTOCLI_PLUGIN_DIR or the plug-in directory of the\n"
              "                    installation.\n"
              "  --help            Show help for the namespace or command named.\n"
              "  --version         Show the version of autocli.\n"
              "\n"
              "Formatters:\n"
              "  table     A table with a header row and a row per struct.\n"
              "  simple    Indented \"Field Name: value\" lines.\n"
              "  json      JSON, for scripts.\n"
              "  xml       XML, for scripts.\n"
              "  csv       Comma-separated values with a header row, for scripts.\n"
              "  keyvalue  A \"Struct.Field=value\" line per value, for scripts.\n"
              "\n"
              "Available Namespaces:\n"
              "  demo  Demonstration commands for the host's tests.\n"
              "\n"
              "Run 'autocli <name> --help' for help on one of them.\n");
    EXPECT_EQ(err_, "");
}

TEST_F(HelpTest, ANamespaceListsItsChildrenInRegistrationOrder) {
    ASSERT_EQ(Main({"demo"}), CommandHost::ExitOk);
    EXPECT_EQ(out_,
              "Usage: autocli [options] demo <namespace|command> [parameters]\n"
              "\n"
              "Demonstration commands for the host's tests.\n"
              "\n"
              "Available Namespaces:\n"
              "  nic  Commands on demonstration NICs.\n"
              "\n"
              "Available Commands:\n"
              "  echo  Give back the text.\n"
              "\n"
              "Run 'autocli demo <name> --help' for help on one of them.\n");
    ASSERT_EQ(Main({"--help", "demo", "nic"}), CommandHost::ExitOk);
    EXPECT_EQ(out_,
              "Usage: autocli [options] demo nic <command> [parameters]\n"
              "\n"
              "Commands on demonstration NICs.\n"
              "\n"
              "Available Commands:\n"
              "  set   Change a demonstration NIC.\n"
              "  list  List the demonstration NICs.\n"
              "  get   Show one demonstration NIC.\n"
              "\n"
              "Run 'autocli demo nic <name> --help' for help on one of them.\n");
}

TEST_F(HelpTest, ACommandShowsUsageParametersAndOutput) {
    ASSERT_EQ(Main({"demo", "nic", "set", "--help"}), CommandHost::ExitOk);
    EXPECT_EQ(out_,
              "Usage: autocli [options] demo nic set --nic-name=<string> [--count=<int>]\n"
              "       [--speed=<int>] [--duplex=<string>] [--policy=<string>]\n"
              "       [--interface-name=<string>] [--enabled=<bool>] [--force]\n"
              "       [--tag=<string>]... [--offset=<int>]\n"
              "\n"
              "Change a demonstration NIC.\n"
              "\n"
              "Parameters:\n"
              "  -n, --nic-name=<string>         required\n"
              "      The NIC to change.\n"
              "  -c, --count=<int>               optional\n"
              "      How many, 1-10.\n"
              "  -s, --speed=<int>               optional\n"
              "      Speed in Mbps. Acceptable values are: 10, 100, 1000\n"
              "  -d, --duplex=<string>           optional\n"
              "      The duplex: full, half\n"
              "  -p, --policy=<string>           optional\n"
              "      The teaming policy:\n"
              "        explicit: Always use the first active uplink.\n"
              "        iphash: Choose an uplink by a hash of the addresses.\n"
              "  -i, --interface-name=<string>   optional\n"
              "      An interface, kelmX.\n"
              "  -e, --enabled=<bool>            optional\n"
              "      Whether the NIC is enabled.\n"
              "  -f, --force                     optional, a flag without value\n"
              "      Skip the checks.\n"
              "  -t, --tag=<string>              optional, repeatable\n"
              "      A tag; repeat for more.\n"
              "      --offset=<int>              optional\n"
              "      An offset.\n"
              "\n"
              "A <bool> is true/false, yes/no or 1/0, in any case.\n"
              "\n"
              "Output: nothing when the command succeeds; the exit status tells.\n");
    EXPECT_EQ(set_->Runs(), 0);
}

TEST_F(HelpTest, ACommandWithoutParametersNamesItsOutputFields) {
    ASSERT_EQ(Main({"--help", "demo", "nic", "list"}), CommandHost::ExitOk);
    EXPECT_EQ(out_,
              "Usage: autocli [options] demo nic list\n"
              "\n"
              "List the demonstration NICs.\n"
              "\n"
              "This command takes no parameters.\n"
              "\n"
              "Output: a list of \"Nic\", each with the fields Name, Speed, Link Up, Addresses,\n"
              "Detail, Comment.\n"
              "Default formatter: table; --formatter chooses another.\n");
}

TEST_F(HelpTest, LongDescriptionsWrapToTheWidth) {
    host_.SetTerminalWidth(44);
    ASSERT_EQ(Main({"demo", "nic", "set", "--help"}), CommandHost::ExitOk);
    EXPECT_NE(out_.find("  -p, --policy=<string>           optional\n"
                        "      The teaming policy:\n"
                        "        explicit: Always use the first\n"
                        "          active uplink.\n"
                        "        iphash: Choose an uplink by a hash\n"
                        "          of the addresses.\n"),
              std::string::npos)
        << out_;
}

CppTools::CallSpec::ParameterSpec Described(
    const char* description, std::shared_ptr<CppTools::CallSpec::ParameterConstraint> constraint) {
    CppTools::CallSpec::ParameterSpec parameter("p", CppTools::CallSpec::ParameterTypeString);
    parameter.SetDescription(description);
    parameter.SetConstraint(constraint);
    return parameter;
}

TEST(ExpandDescriptionTest, PlaceholdersGiveTheAllowedValues) {
    namespace CallSpec = CppTools::CallSpec;
    auto range = CallSpec::ParameterConstraint::New(CallSpec::ConstraintIntRange);
    range->SetIntRange(0, 4094);
    EXPECT_EQ(CommandHost::ExpandDescription(Described("Valid values: %ENUM%", range)),
              "Valid values: 0-4094");
    EXPECT_EQ(CommandHost::ExpandDescription(Described("Values: %FULLENUM%", range)),
              "Values:\n  0-4094");
    auto numbers = CallSpec::ParameterConstraint::New(CallSpec::ConstraintIntEnum);
    numbers->AddIntEnum(4);
    numbers->AddIntEnum(6);
    EXPECT_EQ(CommandHost::ExpandDescription(Described("IP version: %ENUM%", numbers)),
              "IP version: 4, 6");
    auto words = CallSpec::ParameterConstraint::New(CallSpec::ConstraintStringEnum);
    words->AddStringEnum("any");
    words->AddStringEnum(std::string("tcp"), std::string("TCP only"));
    EXPECT_EQ(CommandHost::ExpandDescription(Described("One of %ENUM%.", words)),
              "One of any, tcp.");
    EXPECT_EQ(CommandHost::ExpandDescription(Described("%FULLENUM% Then more.", words)),
              "\n  any\n  tcp: TCP only\nThen more.");
    EXPECT_EQ(CommandHost::ExpandDescription(Described("None: %ENUM%", nullptr)), "None:");
}

}  // namespace
}  // namespace CommandHostTesting
