// autocli's Main: the program's options, exit statuses, and where each message goes.
#include <cstdint>
#include <stdexcept>

#include <nlohmann/json.hpp>

#include "commandhost/HostFixture.h"

namespace CommandHostTesting {
namespace {

class MainTest : public HostTest {
protected:
    // Makes `demo nic list` run `behaviour` instead of leaving result_ and errors_.
    void ListBehaves(ScriptedCommand::Behaviour behaviour) {
        auto nic = host_.GetRoot()->GetNamespaceNode("demo")->GetNamespaceNode("nic");
        list_ = ScriptedCommand::New("Throws.", {}, ScriptedCommand::Root::NicList,
                                     std::move(behaviour));
        list_->SetDefaultOutputFormatter("table");
        auto fresh = CppTools::AutoCli::Namespace::New();
        fresh->RegisterNamespaceNode(list_, "list");
        host_.GetRoot()->GetNamespaceNode("demo")->RegisterNamespaceNode(fresh, "broken");
    }
};

TEST_F(MainTest, SuccessPrintsTheRootAndExitsZero) {
    result_ = MetaString::New("done");
    EXPECT_EQ(Main({"demo", "nic", "list"}), CommandHost::ExitOk);
    EXPECT_EQ(out_, "done\n");
    EXPECT_EQ(err_, "");
}

TEST_F(MainTest, ErrorMessagesGoToStderrOnePerLineWithStatusOne) {
    errors_ = {"There is no pnic with name hwnic9", "Second line"};
    EXPECT_EQ(Main({"demo", "nic", "list"}), CommandHost::ExitCommandError);
    EXPECT_EQ(out_, "");
    EXPECT_EQ(err_, "There is no pnic with name hwnic9\nSecond line\n");
}

TEST_F(MainTest, ARootLeftBesideAnErrorIsStillPrinted) {
    list_->SetDefaultOutputParameter("fields:Nic", "Name");
    result_ = SampleNics();
    errors_ = {"Unable to read one NIC"};
    EXPECT_EQ(Main({"demo", "nic", "list"}), CommandHost::ExitCommandError);
    EXPECT_EQ(out_, "Name\n------\nhwnic0\nhwnic1\n");
    EXPECT_EQ(err_, "Unable to read one NIC\n");
}

TEST_F(MainTest, AFalseBoolRootExitsOne) {
    result_ = MetaBool::New(false);
    EXPECT_EQ(Main({"demo", "nic", "list"}), CommandHost::ExitCommandError);
    EXPECT_EQ(out_, "false\n");
    EXPECT_EQ(Main({"--formatter=json", "demo", "nic", "list"}), CommandHost::ExitCommandError);
    EXPECT_EQ(out_, "false\n");
}

TEST_F(MainTest, AnEscapedExceptionExitsThreeAndPrintsNoRoot) {
    ListBehaves([](const Input&, Output& output) {
        output.SetRootObject(SampleNics());
        output.AddErrorMessage("Partly done");
        throw std::runtime_error("database is locked");
    });
    EXPECT_EQ(Main({"demo", "broken", "list"}), CommandHost::ExitException);
    EXPECT_EQ(out_, "");
    EXPECT_EQ(err_,
              "Partly done\n"
              "Unexpected exception in 'demo broken list': std::runtime_error: database is "
              "locked\n");
}

TEST_F(MainTest, AnExceptionOfAnyTypeIsNamed) {
    ListBehaves([](const Input&, Output&) { throw 42; });
    auto result = host_.Run({"demo", "broken", "list"});
    EXPECT_EQ(result.status, CommandHost::ExitException);
    ASSERT_EQ(result.hostMessages.size(), 1u);
    EXPECT_EQ(result.hostMessages[0],
              "Unexpected exception in 'demo broken list': int (not derived from "
              "std::exception)");
}

TEST_F(MainTest, RefusalsGoToStderrWithStatusTwo) {
    EXPECT_EQ(Main({"demo", "nic", "set", "--nic-nam", "x"}), CommandHost::ExitRefused);
    EXPECT_EQ(out_, "");
    EXPECT_EQ(err_,
              "Unknown parameter '--nic-nam' for 'demo nic set'. Did you mean '--nic-name'?\n");
    EXPECT_EQ(Main({"demo", "nic", "lst"}), CommandHost::ExitRefused);
    EXPECT_EQ(err_, "Unknown command or namespace 'lst' in 'demo nic'. Did you mean 'list'?\n");
    EXPECT_EQ(set_->Runs(), 0);
}

TEST_F(MainTest, GlobalOptions) {
    EXPECT_EQ(Main({"--version"}), CommandHost::ExitOk);
    EXPECT_EQ(out_, "autocli 1.0.0\n");
    EXPECT_EQ(Main({"--fromatter=json", "demo", "echo"}), CommandHost::ExitRefused);
    EXPECT_EQ(err_,
              "Unknown option '--fromatter'. Did you mean '--formatter'? Usage: autocli "
              "[--host=sim|linux] [--formatter=NAME] [--plugin-dir=DIR] [--help] [--version] "
              "network <path...> [parameters], or autocli [--host=sim|linux] [--formatter=NAME] "
              "--batch FILE [--force]\n");
    EXPECT_EQ(Main({"--formatter=jsno", "demo", "echo"}), CommandHost::ExitRefused);
    EXPECT_EQ(err_,
              "Unknown formatter 'jsno'. Did you mean 'json'? Formatters: table, simple, json, "
              "xml, csv, keyvalue.\n");
    EXPECT_EQ(Main({"--formatter="}), CommandHost::ExitRefused);
    EXPECT_EQ(err_, "The option '--formatter' needs a value, as in --formatter=VALUE.\n");
    EXPECT_EQ(Main({"--formatter", "json", "--plugin-dir", "/ignored", "demo", "echo", "-x", "hi"}),
              CommandHost::ExitOk);
    EXPECT_EQ(out_, "\"hi\"\n");
    EXPECT_EQ(Main({"demo", "echo", "-x", "hi", "--formatter", "xml", "--help"}),
              CommandHost::ExitOk);
    EXPECT_EQ(out_.substr(0, 31), "Usage: autocli [options] demo e");
    EXPECT_EQ(Main({"demo", "echo", "-x", "hi", "--formatter=keyvalue"}), CommandHost::ExitOk);
    EXPECT_EQ(out_, "string=hi\n");
    EXPECT_EQ(Main({"demo", "echo", "--formatter"}), CommandHost::ExitRefused);
    EXPECT_EQ(err_, "The option '--formatter' needs a value, as in --formatter=VALUE.\n");
}

TEST_F(MainTest, AnOptionGivenTwiceOrInTheWrongCaseIsRefused) {
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases{
        {{"--formatter=json", "--formatter=xml", "demo", "echo"},
         "The option '--formatter' was given more than once ('json', then 'xml'); it takes a "
         "single value."},
        {{"--formatter=json", "demo", "echo", "--formatter", "json"},
         "The option '--formatter' was given more than once ('json', then 'json'); it takes a "
         "single value."},
        {{"--plugin-dir=/a", "--plugin-dir=/b", "demo", "echo"},
         "The option '--plugin-dir' was given more than once ('/a', then '/b'); it takes a "
         "single value."},
        {{"--formatter=JSON", "demo", "echo"},
         "Unknown formatter 'JSON'. Did you mean 'json'? Formatters: table, simple, json, xml, "
         "csv, keyvalue."},
        {{"--host=linx", "demo", "echo"},
         "Unknown host 'linx'. Did you mean 'linux'? Hosts: sim, linux."},
        {{"--host=sim", "--host=sim", "demo", "echo"},
         "The option '--host' was given more than once ('sim', then 'sim'); it takes a single "
         "value."},
    };
    for (const auto& [arguments, message] : cases) {
        EXPECT_EQ(Main(arguments), CommandHost::ExitRefused);
        EXPECT_EQ(out_, "");
        EXPECT_EQ(err_, message + "\n");
    }
}

// The host comes from --host, else AUTOCLI_HOST; a value that names no host is refused whichever
// gave it, before anything runs.
TEST_F(MainTest, AHostThatIsNeitherSimulatedNorLinuxIsRefused) {
    setenv("AUTOCLI_HOST", "bogus", 1);
    EXPECT_EQ(Main({"demo", "echo", "-x", "hi"}), CommandHost::ExitRefused);
    EXPECT_EQ(err_, "Unknown host 'bogus' in AUTOCLI_HOST. Hosts: sim, linux.\n");
    EXPECT_EQ(echo_->Runs(), 0);
    EXPECT_EQ(Main({"--host=sim", "demo", "echo", "-x", "hi"}), CommandHost::ExitOk);
    EXPECT_EQ(out_, "hi\n");
    unsetenv("AUTOCLI_HOST");
}

// Output that can't be written is never taken for success: the messages still go to stderr,
// then the failure, with status 4.
TEST_F(MainTest, OutputThatCantBeWrittenIsReportedWithStatusFour) {
    struct FullChannel : CommandHost::OutputChannel {
        std::string Write(std::string_view) override { return "No space left on device"; }
    };
    struct StringChannel : CommandHost::OutputChannel {
        std::string Write(std::string_view written) override {
            text.append(written);
            return {};
        }
        std::string text;
    };
    errors_ = {"Unable to read one NIC"};
    result_ = SampleNics();
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases{
        {{"demo", "nic", "list"}, "Unable to read one NIC\n"},
        {{"--formatter=json", "demo", "nic", "get"}, "Unable to read one NIC\n"},
        {{"demo", "nic", "--help"}, ""},
        {{"--version"}, ""},
    };
    for (const auto& [arguments, messages] : cases) {
        FullChannel out;
        StringChannel err;
        EXPECT_EQ(host_.Main(arguments, out, err), CommandHost::ExitOutputFailed);
        EXPECT_EQ(err.text,
                  messages + "Unable to write to standard output: No space left on device\n");
    }
    // A run with nothing to print has nothing to fail.
    FullChannel out;
    StringChannel err;
    errors_.clear();
    result_ = MetaBool::New(true);
    EXPECT_EQ(host_.Main({"demo", "nic", "list"}, out, err), CommandHost::ExitOk);
}

// A long JSON result goes out in parts as it is made: together they are the whole document,
// and after a part fails nothing more is written and the failure is reported once.
TEST_F(MainTest, ALongJsonResultIsWrittenInPartsThatMakeTheWholeDocument) {
    struct PartsChannel : CommandHost::OutputChannel {
        explicit PartsChannel(std::size_t good) : good(good) {}
        std::string Write(std::string_view written) override {
            parts.emplace_back(written);
            return parts.size() > good ? "No space left on device" : "";
        }
        std::size_t good;
        std::vector<std::string> parts;
    };
    auto nics = SampleNics();
    for (int i = 0; i < 3000; ++i) {
        nics->Add(SampleNic(("hwnic" + std::to_string(i + 2)).c_str(), 1000, true, {"192.0.2.1"}));
    }
    result_ = nics;
    const std::vector<std::string> arguments{"--formatter=json", "demo", "nic", "list"};

    PartsChannel out(SIZE_MAX);
    PartsChannel err(SIZE_MAX);
    EXPECT_EQ(host_.Main(arguments, out, err), CommandHost::ExitOk);
    EXPECT_GT(out.parts.size(), 1u);
    std::string whole;
    for (const std::string& part : out.parts) {
        whole.append(part);
    }
    const auto document = nlohmann::json::parse(whole);
    ASSERT_EQ(document.size(), nics->GetCount());
    EXPECT_EQ(document.back()["Name"], "hwnic3001");
    EXPECT_TRUE(err.parts.empty());

    PartsChannel full(0);
    PartsChannel failure(SIZE_MAX);
    EXPECT_EQ(host_.Main(arguments, full, failure), CommandHost::ExitOutputFailed);
    EXPECT_EQ(full.parts.size(), 1u);
    EXPECT_EQ(failure.parts, (std::vector<std::string>{
                                 "Unable to write to standard output: No space left on device\n"}));
}

TEST(GlobalOptionsTest, StopAtTheFirstWordOfThePath) {
    auto options = CommandHost::ReadGlobalOptions(
        {"--plugin-dir=/opt/plugins", "--help", "network", "--formatter=json"});
    EXPECT_EQ(options.pluginDirectory, "/opt/plugins");
    EXPECT_TRUE(options.help);
    EXPECT_FALSE(options.version);
    EXPECT_EQ(options.formatter, "");
    EXPECT_EQ(options.next, 2u);
    EXPECT_EQ(options.error, "");
}

}  // namespace
}  // namespace CommandHostTesting
