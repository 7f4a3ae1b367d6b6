// Reading parameters from the command line, the declared checks, and refusals (status 2).
#include "commandhost/HostFixture.h"
#include "commandhost/cli/Suggestions.h"

namespace CommandHostTesting {
namespace {

using Words = std::vector<std::string>;

class ParserTest : public HostTest {
protected:
    // Runs `demo nic set` with the words and expects it to run.
    const Input& Accepted(Words parameters) {
        Words words{"demo", "nic", "set"};
        words.insert(words.end(), parameters.begin(), parameters.end());
        auto result = host_.Run(words);
        EXPECT_EQ(result.status, CommandHost::ExitOk);
        EXPECT_TRUE(result.hostMessages.empty()) << result.hostMessages.front();
        EXPECT_TRUE(set_->LastInput());
        return *set_->LastInput();
    }

    // Runs the words and expects one refusal line, with the command not run.
    std::string Refused(const Words& words) {
        int runsBefore = set_->Runs();
        auto result = host_.Run(words);
        EXPECT_EQ(result.status, CommandHost::ExitRefused);
        EXPECT_EQ(result.output, nullptr);
        EXPECT_EQ(set_->Runs(), runsBefore);
        EXPECT_EQ(result.hostMessages.size(), 1u);
        return result.hostMessages.empty() ? std::string() : result.hostMessages.front();
    }

    std::string RefusedSet(Words parameters) {
        Words words{"demo", "nic", "set"};
        words.insert(words.end(), parameters.begin(), parameters.end());
        return Refused(words);
    }
};

TEST_F(ParserTest, ValueFormsAllReachTheCommand) {
    EXPECT_EQ(Accepted({"--nic-name=hwnic0"}).GetParameter("nic-name"), "hwnic0");
    EXPECT_EQ(Accepted({"--nic-name", "hwnic1"}).GetParameter("nic-name"), "hwnic1");
    EXPECT_EQ(Accepted({"-n", "hwnic2"}).GetParameter("nic-name"), "hwnic2");
    EXPECT_EQ(Accepted({"-n=hwnic3"}).GetParameter("nic-name"), "hwnic3");
    EXPECT_EQ(Accepted({"--nic-name=a=b"}).GetParameter("nic-name"), "a=b");
}

TEST_F(ParserTest, IntsKeepTheTextAsTypedAndNegativeValuesFollowTheirName) {
    const Input& input = Accepted({"-n", "x", "--count=+03", "--offset", "-5"});
    EXPECT_EQ(input.GetParameter("count"), "+03");
    EXPECT_EQ(input.GetParameterInt("count"), 3);
    EXPECT_EQ(input.GetParameterInt("offset"), -5);
    EXPECT_TRUE(input.HasParameter("count"));
    EXPECT_FALSE(input.HasParameter("speed"));
    EXPECT_EQ(input.GetParameterInt("speed"), 0);
}

TEST_F(ParserTest, BoolsFlagsAndLists) {
    const Input& input =
        Accepted({"-n", "x", "--enabled=No", "-f", "-t", "a", "--tag", "b", "--tag=c"});
    EXPECT_TRUE(input.HasParameter("enabled"));
    EXPECT_FALSE(input.GetParameterBool("enabled"));
    EXPECT_TRUE(input.IsFlagSet("force"));
    std::vector<std::string> tags;
    input.GetParameterList("tag", tags);
    EXPECT_EQ(tags, (Words{"a", "b", "c"}));
    EXPECT_TRUE(Accepted({"-n", "x", "-e", "YES"}).GetParameterBool("enabled"));
    EXPECT_TRUE(Accepted({"-n", "x", "-e", "1"}).GetParameterBool("enabled"));
    EXPECT_FALSE(Accepted({"-n", "x"}).IsFlagSet("force"));
}

TEST_F(ParserTest, ValuesThatPassTheirConstraints) {
    const Input& input = Accepted(
        {"-n", "x", "-c", "10", "-s", "1000", "-d", "half", "-p", "iphash", "-i", "kelm42"});
    EXPECT_EQ(input.GetParameterInt("count"), 10);
    EXPECT_EQ(input.GetParameter("interface-name"), "kelm42");
    EXPECT_EQ(Accepted({"-n", "x", "-c", "1"}).GetParameterInt("count"), 1);
}

TEST_F(ParserTest, UnknownParametersAreRefusedWithASuggestion) {
    EXPECT_EQ(RefusedSet({"--nic-nme=hwnic0"}),
              "Unknown parameter '--nic-nme' for 'demo nic set'. Did you mean '--nic-name'?");
    EXPECT_EQ(RefusedSet({"-n", "x", "--zzz"}),
              "Unknown parameter '--zzz' for 'demo nic set'. Its parameters are: --nic-name (-n), "
              "--count (-c), --speed (-s), --duplex (-d), --policy (-p), --interface-name (-i), "
              "--enabled (-e), --force (-f), --tag (-t), --offset.");
    EXPECT_EQ(RefusedSet({"-z", "1"}).substr(0, 46),
              "Unknown parameter '-z' for 'demo nic set'. Its");
    EXPECT_EQ(Refused({"demo", "nic", "list", "--all=secret"}),
              "'demo nic list' takes no parameters, but was given '--all'.");
    EXPECT_EQ(RefusedSet({"-n", "x", "--NIC-NAME=y"}),
              "Unknown parameter '--NIC-NAME' for 'demo nic set'. Did you mean '--nic-name'?");
}

TEST_F(ParserTest, MalformedWordsAreRefused) {
    EXPECT_EQ(RefusedSet({"-n", "x", "hwnic0"}),
              "Unexpected argument 'hwnic0' for 'demo nic set'; parameters are given as "
              "--name=value, --name value or -s value.");
    EXPECT_EQ(RefusedSet({"-n", "x", "--force=yes"}),
              "Parameter '--force' is a flag and takes no value, but was given 'yes'.");
    EXPECT_EQ(RefusedSet({"-n", "x", "--count"}),
              "Parameter '--count' needs a value (a signed 64-bit decimal integer), but none was "
              "given.");
    EXPECT_EQ(RefusedSet({"--nic-name", "--force"}),
              "Parameter '--nic-name' needs a value (a string), but none was given.");
    EXPECT_EQ(RefusedSet({"-n", "x", "-e"}),
              "Parameter '--enabled' needs a value (true/false, yes/no or 1/0), but none was "
              "given.");
}

TEST_F(ParserTest, OnlyListsMayRepeat) {
    EXPECT_EQ(RefusedSet({"-n", "a", "--nic-name", "b"}),
              "Parameter '--nic-name' was given more than once ('a', then 'b'); it takes a "
              "single value.");
    EXPECT_EQ(RefusedSet({"-n", "a", "-f", "--force"}), "Flag '--force' was given more than once.");
}

TEST_F(ParserTest, IntsAndBoolsMustBeWellFormed) {
    EXPECT_EQ(RefusedSet({"-n", "x", "--count=12x"}),
              "Invalid value '12x' for parameter '--count': expected a signed 64-bit decimal "
              "integer.");
    EXPECT_EQ(RefusedSet({"-n", "x", "--offset=9223372036854775808"}),
              "Invalid value '9223372036854775808' for parameter '--offset': out of range for a "
              "signed 64-bit integer (-9223372036854775808 to 9223372036854775807).");
    EXPECT_EQ(RefusedSet({"-n", "x", "--offset=0x10"}),
              "Invalid value '0x10' for parameter '--offset': expected a signed 64-bit decimal "
              "integer.");
    EXPECT_EQ(RefusedSet({"-n", "x", "--enabled=maybe"}),
              "Invalid value 'maybe' for parameter '--enabled': expected true/false, yes/no or "
              "1/0.");
}

// A value is quoted on one line: control characters escaped, and a long one cut, with its
// length.
TEST_F(ParserTest, MessagesQuoteValuesOnOneLineAndCutLongOnes) {
    const std::string longValue(100000, 'x');
    const std::string shown = "'" + std::string(60, 'x') + "...' (100000 characters)";
    const std::vector<std::pair<Words, std::string>> cases{
        {{"-n", "x", "--count=" + longValue},
         "Invalid value " + shown +
             " for parameter '--count': expected a signed 64-bit decimal "
             "integer."},
        {{"-n", "x", "--duplex=" + longValue},
         "Invalid value " + shown + " for parameter '--duplex': allowed values are full, half."},
        {{"-n", "x", "-i", "kelm1\n"},
         "Invalid value 'kelm1\\n' for parameter '--interface-name': it must match the regular "
         "expression 'kelm([0-9]|[1-9][0-9])'."},
        {{"-n", "a\tb", "-n", longValue},
         "Parameter '--nic-name' was given more than once ('a\\tb', then " + shown +
             "); it takes a single value."},
        {{"-n", "x", longValue},
         "Unexpected argument " + shown +
             " for 'demo nic set'; parameters are given as --name=value, --name value or -s "
             "value."},
        {{"-n", "x", "--enabled=\x01"},
         "Invalid value '\\x01' for parameter '--enabled': expected true/false, yes/no or 1/0."},
    };
    for (const auto& [parameters, message] : cases) {
        EXPECT_EQ(RefusedSet(parameters), message);
    }
    // Characters, not bytes, are counted and cut.
    std::string accented;
    for (int i = 0; i < 70; ++i) {
        accented += "\u00e9";
    }
    EXPECT_THAT(RefusedSet({"-n", "x", "--duplex=" + accented}),
                ::testing::StartsWith("Invalid value '" + accented.substr(0, 120) +
                                      "...' (70 characters) for"));
}

TEST_F(ParserTest, DeclaredChecksRefuseBeforeTheCommandRuns) {
    EXPECT_EQ(RefusedSet({"--force"}),
              "Missing required parameter '--nic-name' (-n) for 'demo nic set'.");
    EXPECT_EQ(RefusedSet({"-n", "x", "--count=11"}),
              "Invalid value '11' for parameter '--count': allowed range is 1-10.");
    EXPECT_EQ(RefusedSet({"-n", "x", "--count=0"}),
              "Invalid value '0' for parameter '--count': allowed range is 1-10.");
    EXPECT_EQ(RefusedSet({"-n", "x", "--speed=7"}),
              "Invalid value '7' for parameter '--speed': allowed values are 10, 100, 1000.");
    EXPECT_EQ(RefusedSet({"-n", "x", "--duplex=fulll"}),
              "Invalid value 'fulll' for parameter '--duplex': allowed values are full, half. "
              "Did you mean 'full'?");
    EXPECT_EQ(RefusedSet({"-n", "x", "--policy=random"}),
              "Invalid value 'random' for parameter '--policy': allowed values are explicit, "
              "iphash.");
    EXPECT_EQ(RefusedSet({"-n", "x", "-i", "kelm256"}),
              "Invalid value 'kelm256' for parameter '--interface-name': it must match the "
              "regular expression 'kelm([0-9]|[1-9][0-9])'.");
    // The expression must match the whole value, not a part of it.
    EXPECT_EQ(RefusedSet({"-n", "x", "-i", "xkelm1"}).substr(0, 24), "Invalid value 'xkelm1' f");
}

TEST_F(ParserTest, PathsThatNameNoCommandAreRefused) {
    EXPECT_EQ(Refused({"dmeo", "nic", "set"}), "Unknown namespace 'dmeo'. Did you mean 'demo'?");
    EXPECT_EQ(Refused({"demo", "nci", "set"}),
              "Unknown command or namespace 'nci' in 'demo'. Did you mean 'nic'?");
    EXPECT_EQ(Refused({"demo", "nic", "lst"}),
              "Unknown command or namespace 'lst' in 'demo nic'. Did you mean 'list'?");
    EXPECT_EQ(Refused({"demo", "zzzz"}),
              "Unknown command or namespace 'zzzz' in 'demo'; choose one of: nic, echo.");
    EXPECT_EQ(Refused({"demo", "nic"}),
              "'demo nic' is a namespace, not a command; choose one of: set, list, get.");
    EXPECT_EQ(Refused({"demo", "nic", "-n", "x"}),
              "'demo nic' is a namespace, not a command; choose one of: set, list, get.");
    EXPECT_EQ(Refused({}), "No command given; choose one of: demo.");
}

TEST(SuggestionTest, PicksTheClosestLikelyMisspelling) {
    const std::vector<std::string> names{"list", "get", "set", "stats", "ipv4"};
    EXPECT_EQ(CommandHost::ClosestName("lsit", names), "list");
    EXPECT_EQ(CommandHost::ClosestName("gte", names), "get");
    EXPECT_EQ(CommandHost::ClosestName("stat", names), "stats");
    EXPECT_EQ(CommandHost::ClosestName("ipv6", names), "ipv4");
    EXPECT_EQ(CommandHost::ClosestName("firewall", names), "");
    EXPECT_EQ(CommandHost::ClosestName("IPV4", names), "ipv4");
    EXPECT_EQ(CommandHost::ClosestName("Get", names), "get");
    EXPECT_EQ(CommandHost::EditDistance("kitten", "sitting"), 3u);
    EXPECT_EQ(CommandHost::EditDistance("ab", "ba"), 1u);
    EXPECT_EQ(CommandHost::EditDistance("", "abc"), 3u);
}

}  // namespace
}  // namespace CommandHostTesting
