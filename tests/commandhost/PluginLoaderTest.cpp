// Finding and loading plug-ins, in-process and through the autocli binary.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "commandhost/HostFixture.h"
#include "support/CommandTest.h"

namespace CommandHostTesting {
namespace {

using Testing::TemporaryDirectory;

void WriteFile(const std::string& path, const std::string& content) {
    std::ofstream(path) << content;
}

// The message LoadPlugins throws for `directory`, or "" when it loads.
std::string LoadError(const std::string& directory) {
    CommandHost::CommandHost host;
    try {
        host.LoadPlugins(directory);
    } catch (const std::runtime_error& e) {
        return e.what();
    }
    return {};
}

TEST(PluginLoaderTest, TheBuiltPluginRegistersTheNetworkTree) {
    CommandHost::CommandHost host;
    host.LoadPlugins(PLUGIN_DIRECTORY);
    auto network = host.GetRoot()->GetNamespaceNode("network");
    ASSERT_TRUE(network);
    EXPECT_EQ(network->GetPathString(' '), "network");
    EXPECT_TRUE(network->HasNamespaceNode("nic"));
    auto result = host.Run({"network", "nic", "lst"});
    EXPECT_EQ(result.status, CommandHost::ExitRefused);
}

TEST(PluginLoaderTest, ABrokenLibraryIsNamedWithTheLoadersReason) {
    TemporaryDirectory directory;
    WriteFile(directory.Path() + "/libbroken.so", "this is not a shared object\n");
    WriteFile(directory.Path() + "/notes.txt", "ignored\n");
    std::string error = LoadError(directory.Path());
    std::string expected = "Cannot load the plug-in '" + directory.Path() + "/libbroken.so': ";
    EXPECT_EQ(error.substr(0, expected.size()), expected);
    EXPECT_NE(error.find("libbroken.so: "), std::string::npos) << error;
    EXPECT_GT(error.size(), expected.size() + directory.Path().size()) << error;
}

TEST(PluginLoaderTest, ALibraryWithoutTheEntryIsRefused) {
    TemporaryDirectory directory;
    const std::filesystem::path library =
        std::filesystem::path(AUTOCLI_BINARY).parent_path() / "libcpptools.so";
    std::filesystem::copy_file(library, std::filesystem::path(directory.Path()) / "libnoentry.so");
    std::string error = LoadError(directory.Path());
    std::string expected = "The plug-in '" + directory.Path() +
                           "/libnoentry.so' has no entry AutoCli_RegisterNamespaces: ";
    EXPECT_EQ(error.substr(0, expected.size()), expected) << error;
}

TEST(PluginLoaderTest, OnlyLibSoFilesAreLoaded) {
    TemporaryDirectory directory;
    WriteFile(directory.Path() + "/broken.so", "not a library");
    WriteFile(directory.Path() + "/libbroken.so.1", "not a library");
    WriteFile(directory.Path() + "/libbroken.txt", "not a library");
    EXPECT_EQ(LoadError(directory.Path()), "");
}

TEST(PluginLoaderTest, AMissingDirectoryIsRefused) {
    EXPECT_EQ(LoadError("/nonexistent/plugins"),
              "Cannot open the plug-in directory '/nonexistent/plugins': No such file or "
              "directory");
}

TEST(PluginLoaderTest, TheDirectoryComesFromTheOptionTheEnvironmentOrTheExecutable) {
    const char* saved = std::getenv("AUTOCLI_PLUGIN_DIR");
    std::string savedValue = saved != nullptr ? saved : "";
    setenv("AUTOCLI_PLUGIN_DIR", "/from/environment", 1);
    EXPECT_EQ(CommandHost::PluginDirectory("/from/option"), "/from/option");
    EXPECT_EQ(CommandHost::PluginDirectory(""), "/from/environment");
    unsetenv("AUTOCLI_PLUGIN_DIR");
    std::filesystem::path executable = std::filesystem::read_symlink("/proc/self/exe");
    EXPECT_EQ(CommandHost::PluginDirectory(""),
              (executable.parent_path().parent_path() / "plugins").string());
    if (saved != nullptr) {
        setenv("AUTOCLI_PLUGIN_DIR", savedValue.c_str(), 1);
    }
}

TEST(AutocliBinaryTest, ABrokenPluginExitsThree) {
    TemporaryDirectory state;
    TemporaryDirectory plugins;
    WriteFile(plugins.Path() + "/libbroken.so", "garbage");
    auto result = Testing::RunAutocli({"--plugin-dir=" + plugins.Path(), "network", "nic", "list"},
                                      state.Path());
    EXPECT_EQ(result.status, 3);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(
        result.err.rfind("Cannot load the plug-in '" + plugins.Path() + "/libbroken.so': ", 0), 0u)
        << result.err;
    EXPECT_EQ(result.err.back(), '\n');
}

TEST(AutocliBinaryTest, FindsItsPluginsFromTheEnvironment) {
    TemporaryDirectory state;
    TemporaryDirectory empty;
    auto result =
        Testing::RunAutocli({"network"}, state.Path(), {{"AUTOCLI_PLUGIN_DIR", empty.Path()}});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.err,
              "Unknown namespace 'network'; no plug-in registered any (check --plugin-dir or "
              "AUTOCLI_PLUGIN_DIR).\n");
    result =
        Testing::RunAutocli({"--version"}, state.Path(), {{"AUTOCLI_PLUGIN_DIR", "/nonexistent"}});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, "autocli 1.0.0\n");
}

TEST(AutocliBinaryTest, RunsACommandOfTheBuiltPlugin) {
    TemporaryDirectory state;
    auto result = Testing::RunAutocli({"network", "nic", "up", "--nic-name"}, state.Path());
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.err, "Parameter '--nic-name' needs a value (a string), but none was given.\n");
    result = Testing::RunAutocli({"--formatter=csv", "network", "nic", "list"}, state.Path());
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out.substr(0, 5), "Name,");
}

}  // namespace
}  // namespace CommandHostTesting
