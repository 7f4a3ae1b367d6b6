// Fixtures for command tests: each test gets a fresh state directory, and runs commands
// in-process through the same parse, check and execute path as autocli.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "commandhost/cli/CommandHost.h"
#include "cpptools/MetaObj.h"
#include "hostsim/Control.h"

namespace Testing {

// A temporary directory removed with everything in it when the object goes.
class TemporaryDirectory {
public:
    TemporaryDirectory();
    ~TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
    const std::string& Path() const { return path_; }

private:
    std::string path_;
};

// What a fault sweep of one command line allows besides "error messages and no root". A failure
// to make the network model is not the rules' to judge: it ends as the command's line of
// kModelFailures (support/ModelFailures.h) says.
struct SweepRules {
    // A failure of one of these operations is handled inside the run, which then succeeds.
    std::vector<std::string> handledOperations = {};
    // A failure of one of these operations comes ahead of the command's guarded block and
    // so reaches the command host as an escaped exception.
    std::vector<std::string> escapingOperations = {};
    // The command has no handler: a failure of any operation escapes.
    bool everyFailureEscapes = false;
    // The command leaves a root beside its error messages.
    bool rootMayStay = false;
    // Command lines (after "network") run without faults on each fresh host ahead of the
    // swept line, for a command that needs something made first.
    std::vector<std::vector<std::string>> setup = {};
};

// One line of a family's sweep table: the command line after "network", the operations the
// sweep must have failed, and what else the sweep allows.
struct SweepCase {
    std::vector<std::string> words;
    std::vector<std::string> expected;
    SweepRules rules = {};
};

// The plug-in's tree, registered once per process.
CommandHost::CommandHost& PluginHost();

class CommandTest : public ::testing::Test {
protected:
    // A fresh state directory, which the simulated host fills with the default host on first
    // use; no faults.
    void SetUp() override;
    void TearDown() override;

    // Runs "network <words...>" in-process.
    CommandHost::RunResult Run(const std::vector<std::string>& words);

    // Runs and expects success; returns the root.
    std::shared_ptr<CppTools::MetaObj::MetaValue> RunOk(const std::vector<std::string>& words);
    std::shared_ptr<CppTools::MetaObj::MetaList> RunList(const std::vector<std::string>& words);
    std::shared_ptr<CppTools::MetaObj::MetaStruct> RunStruct(const std::vector<std::string>& words);
    // Runs and expects exactly one error message and no root; returns the message.
    std::string RunError(const std::vector<std::string>& words);

    const std::string& StateDirectory() const { return state_->Path(); }

    using SweepRules = Testing::SweepRules;

    // The fault sweep: records the host operations of a normal run of `words` on a fresh
    // default host, then runs it once per operation on another fresh host with that operation
    // failing. Every such run must end with error messages and no root (or as `rules` say) and
    // must not let the exception escape; a run whose network model failed ends with the status
    // and message of the command's line of kModelFailures. Returns the operations swept, so a test
    // can check the sweep saw what it expects.
    std::vector<HostSim::OperationCall> ExpectEveryFaultFails(const std::vector<std::string>& words,
                                                              const SweepRules& rules);
    std::vector<HostSim::OperationCall> ExpectEveryFaultFails(
        const std::vector<std::string>& words) {
        return ExpectEveryFaultFails(words, SweepRules{});
    }
    // Sweeps each line of a table and checks that each sweep failed the line's expected
    // operations.
    void SweepTable(const std::vector<SweepCase>& cases);

private:
    std::unique_ptr<TemporaryDirectory> state_;
};

// Reading result values.
std::string Str(const std::shared_ptr<CppTools::MetaObj::MetaStruct>& row,
                const std::string& field);
long Int(const std::shared_ptr<CppTools::MetaObj::MetaStruct>& row, const std::string& field);
bool Bool(const std::shared_ptr<CppTools::MetaObj::MetaStruct>& row, const std::string& field);
std::vector<std::string> Strings(const std::shared_ptr<CppTools::MetaObj::MetaStruct>& row,
                                 const std::string& field);
std::shared_ptr<CppTools::MetaObj::MetaStruct> Nested(
    const std::shared_ptr<CppTools::MetaObj::MetaStruct>& row, const std::string& field);
std::vector<std::shared_ptr<CppTools::MetaObj::MetaStruct>> Rows(
    const std::shared_ptr<CppTools::MetaObj::MetaList>& list);
// A fresh root with the plug-in's `network` tree registered under it.
std::shared_ptr<CppTools::AutoCli::NamespaceNode> RegisteredTree();
// Visits `node` and every node under it, each namespace before its children.
void WalkTree(
    const std::shared_ptr<CppTools::AutoCli::NamespaceNode>& node,
    const std::function<void(const std::shared_ptr<CppTools::AutoCli::NamespaceNode>&)>& visit);
// The names of the fields of the struct "network <words...>" declares for its result (or each
// row), in their order.
std::vector<std::string> DeclaredFieldNames(const std::vector<std::string>& words);
// The names of the fields of `row`, in their order.
std::vector<std::string> FieldNames(const std::shared_ptr<CppTools::MetaObj::MetaStruct>& row);
// The named field of `row`; a failure when there is none.
std::shared_ptr<CppTools::MetaObj::MetaValue> FieldOf(
    const std::shared_ptr<CppTools::MetaObj::MetaStruct>& row, const std::string& field);
// The row whose `field` is `value`; fails the test when there is none.
std::shared_ptr<CppTools::MetaObj::MetaStruct> RowWhere(
    const std::shared_ptr<CppTools::MetaObj::MetaList>& list, const std::string& field,
    const std::string& value);

// Running the real binaries.
struct ProcessResult {
    int status = -1;
    std::string out;
    std::string err;
};
// Runs `program` with `arguments` (after the program name), the current environment plus
// HOSTSIM_DIR set to `stateDirectory` and `environment`, and collects its output.
ProcessResult RunProgram(const std::string& program, const std::vector<std::string>& arguments,
                         const std::string& stateDirectory,
                         const std::map<std::string, std::string>& environment = {});
// Runs autocli with `arguments` (after the program name), with HOSTSIM_DIR set to
// `stateDirectory` and the extra environment given.
ProcessResult RunAutocli(const std::vector<std::string>& arguments,
                         const std::string& stateDirectory,
                         const std::map<std::string, std::string>& environment = {});
ProcessResult RunHostsim(const std::vector<std::string>& arguments,
                         const std::string& stateDirectory,
                         const std::map<std::string, std::string>& environment = {});

}  // namespace Testing
