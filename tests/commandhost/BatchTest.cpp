// Batch mode: splitting lines into words, and running a file of command lines in one process.
#include <fstream>

#include "commandhost/HostFixture.h"
#include "commandhost/cli/Batch.h"
#include "commandhost/cli/CommandLine.h"
#include "support/CommandTest.h"

namespace CommandHostTesting {
namespace {

using Words = std::vector<std::string>;

TEST(SplitWords, SplitsAsAShellDoesWithoutExpanding) {
    const struct {
        const char* line;
        Words words;
    } cases[] = {
        {"", {}},
        {"  \t ", {}},
        {"network nic up -n hwnic1", {"network", "nic", "up", "-n", "hwnic1"}},
        {"  a\t\tb  ", {"a", "b"}},
        {"-p 'VM Network'", {"-p", "VM Network"}},
        {"-p \"VM Network\"", {"-p", "VM Network"}},
        {"-p VM\\ Network", {"-p", "VM Network"}},
        {"''", {""}},
        {"a'b'\"c\"d", {"abcd"}},
        {"'a\\b \"c\"'", {"a\\b \"c\""}},
        {"\"a\\\"b\\\\c\\$d\\`e\\n\"", {"a\"b\\c$d`e\\n"}},
        {"$HOME `x` ~ * #x", {"$HOME", "`x`", "~", "*", "#x"}},
        {"\\'", {"'"}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(CommandHost::SplitWords(c.line), c.words) << c.line;
    }
}

TEST(SplitWords, RefusesWhatIsNotClosed) {
    const struct {
        const char* line;
        const char* message;
    } cases[] = {
        {"-p 'VM", "The line has a single quote that is not closed."},
        {"-p \"VM", "The line has a double quote that is not closed."},
        {"-p \"VM\\\"", "The line has a double quote that is not closed."},
        {"a \\", "The line ends in a backslash."},
    };
    for (const auto& c : cases) {
        try {
            CommandHost::SplitWords(c.line);
            ADD_FAILURE() << c.line;
        } catch (const CommandHost::CommandLineError& e) {
            EXPECT_STREQ(e.what(), c.message) << c.line;
        }
    }
}

class BatchTest : public HostTest {
protected:
    int Batch(const std::string& text, Words options = {}) {
        const std::string path = directory_.Path() + "/batch";
        std::ofstream(path) << text;
        options.insert(options.begin(), {"--batch", path});
        return Main(options);
    }

    Testing::TemporaryDirectory directory_;
};

TEST_F(BatchTest, RunsEachLineSkippingBlanksAndComments) {
    EXPECT_EQ(Batch("demo echo --text one\n\n   # a comment\n#\ndemo echo --text 'two words'\r\n"
                    "demo echo --text=three"),
              CommandHost::ExitOk);
    EXPECT_EQ(out_, "one\ntwo words\nthree\n");
    EXPECT_EQ(err_, "");
    EXPECT_EQ(echo_->Runs(), 3);
}

TEST_F(BatchTest, StopsAtTheFirstFailingLineAndNamesIt) {
    errors_ = {"Unable to list"};
    EXPECT_EQ(Batch("demo echo --text one\n\ndemo nic list\ndemo nope\ndemo echo --text four\n"),
              CommandHost::ExitCommandError);
    EXPECT_EQ(out_, "one\n");
    EXPECT_EQ(err_,
              "Unable to list\n"
              "autocli: line 3 of the batch failed (exit status 1); the lines after it were not "
              "run.\n");
    EXPECT_EQ(echo_->Runs(), 1);
}

TEST_F(BatchTest, ForceRunsEveryLineAndGivesTheFirstFailure) {
    errors_ = {"Unable to list"};
    EXPECT_EQ(Batch("demo nope\ndemo nic list\ndemo echo --text 'open\ndemo echo --text four\n",
                    {"--force"}),
              CommandHost::ExitRefused);
    EXPECT_EQ(out_, "four\n");
    EXPECT_THAT(err_, ::testing::HasSubstr("Unable to list\n"
                                           "The line has a single quote that is not closed.\n"));
    EXPECT_THAT(err_, ::testing::EndsWith("autocli: 3 lines of the batch failed; the first was "
                                          "line 1 (exit status 2).\n"));
    EXPECT_EQ(echo_->Runs(), 1);
}

TEST_F(BatchTest, AFormatterGivenWithTheBatchServesLinesWithoutTheirOwn) {
    EXPECT_EQ(
        Batch("demo echo --text one\ndemo echo --text two --formatter=xml\n", {"--formatter=json"}),
        CommandHost::ExitOk);
    EXPECT_THAT(out_, ::testing::StartsWith("\"one\"\n"));
    EXPECT_THAT(out_, ::testing::HasSubstr("<string>two</string>"));
}

TEST_F(BatchTest, RefusesOptionsThatBelongToTheProcess) {
    for (const char* line : {"--batch other", "--force demo echo", "--version",
                             "--plugin-dir=/tmp demo echo", "--host=sim demo echo"}) {
        EXPECT_EQ(Batch(line), CommandHost::ExitRefused) << line;
        EXPECT_THAT(err_,
                    ::testing::StartsWith("The options --batch, --force, --host, --plugin-dir "
                                          "and --version can't be given on a line of a "
                                          "batch."))
            << line;
    }
    EXPECT_EQ(Main({"--force", "demo", "echo"}), CommandHost::ExitRefused);
    EXPECT_EQ(err_, "The option '--force' goes with '--batch'.\n");
    EXPECT_EQ(Main({"--batch", "-", "demo", "echo"}), CommandHost::ExitRefused);
    EXPECT_EQ(Main({"--batch", directory_.Path() + "/missing"}), CommandHost::ExitRefused);
    EXPECT_EQ(err_, "autocli: can't read the batch file " + directory_.Path() +
                        "/missing: No such file or directory\n");
}

}  // namespace
}  // namespace CommandHostTesting
