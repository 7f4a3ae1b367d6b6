// libFuzzer target: arbitrary command lines through autocli's whole in-process path (options,
// parsing, checks, the command, the simulated host, the formatters) on a throwaway host.
//
// An input is one command line, split into words as a batch line is. With FUZZ_SEED_DIRECTORY
// set, the target writes a seed for every command of the tree there and exits: its path and a
// value for each parameter, as its help declares them.
#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "commandhost/cli/Batch.h"
#include "commandhost/cli/CommandHost.h"
#include "commandhost/cli/CommandLine.h"
#include "cpptools/CallSpec.h"
#include "hostsim/Control.h"

extern "C" void AutoCli_RegisterNamespaces(std::shared_ptr<CppTools::AutoCli::NamespaceNode>&);

namespace {

namespace fs = std::filesystem;

// A fresh host every so many inputs, so that what they add does not pile up without bound.
constexpr unsigned kInputsPerHost = 5000;

struct Discard : CommandHost::OutputChannel {
    std::string Write(std::string_view) override { return {}; }
};

CommandHost::CommandHost* host;
std::string hostDirectory;
unsigned inputsOnHost = 0;

void FreshHost() {
    static unsigned hosts = 0;
    const std::string previous = hostDirectory;
    hostDirectory = (fs::temp_directory_path() /
                     ("autocli-fuzz-" + std::to_string(getpid()) + "-" + std::to_string(hosts++)))
                        .string();
    fs::create_directories(hostDirectory);
    HostSim::UseStateDirectory(hostDirectory);
    if (!previous.empty()) {
        fs::remove_all(previous);
    }
    inputsOnHost = 0;
}

// A value the parameter's declaration allows: its first choice, the low end of its range, or a
// plain value of its type.
std::string SeedValue(const CppTools::CallSpec::ParameterSpec& parameter) {
    using namespace CppTools::CallSpec;
    if (const auto& constraint = parameter.GetConstraint()) {
        switch (constraint->GetType()) {
            case ConstraintIntRange:
                return std::to_string(constraint->GetLow());
            case ConstraintIntEnum:
                return std::to_string(constraint->GetIntEnum().front());
            case ConstraintStringEnum:
                return constraint->GetStringEnum().front().value;
            case ConstraintStringRegex:
                break;
        }
    }
    switch (parameter.GetType()) {
        case ParameterTypeBool:
            return "true";
        case ParameterTypeInt:
            return "1";
        default:
            return "hwnic0";
    }
}

void WriteSeeds(const std::shared_ptr<CppTools::AutoCli::NamespaceNode>& node,
                const std::string& path, const fs::path& directory, unsigned& count) {
    for (const std::string& name : node->GetNamespaceNodeNames()) {
        auto child = node->GetNamespaceNode(name);
        const std::string childPath = path.empty() ? name : path + " " + name;
        if (child->GetType() != CppTools::AutoCli::NodeTypeCommand) {
            WriteSeeds(child, childPath, directory, count);
            continue;
        }
        auto command = std::dynamic_pointer_cast<CppTools::AutoCli::CommandSpec>(child);
        std::string line = childPath;
        const auto spec = command->GetInputSpec();
        for (const auto& parameter : spec->GetParameters()) {
            line += " --" + parameter->GetName();
            if (parameter->GetType() != CppTools::CallSpec::ParameterTypeFlag) {
                line += "=" + SeedValue(*parameter);
            }
        }
        std::ofstream(directory / ("seed" + std::to_string(count++))) << line;
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    // Nothing an input names may wait on the terminal.
    int devNull = open("/dev/null", O_RDONLY);
    dup2(devNull, STDIN_FILENO);
    close(devNull);
    host = new CommandHost::CommandHost();
    host->Register(&AutoCli_RegisterNamespaces);
    if (const char* seeds = std::getenv("FUZZ_SEED_DIRECTORY")) {
        fs::create_directories(seeds);
        unsigned count = 0;
        WriteSeeds(host->GetRoot(), "", seeds, count);
        std::printf("wrote %u seeds to %s\n", count, seeds);
        std::exit(0);
    }
    FreshHost();
    std::atexit([] { fs::remove_all(hostDirectory); });
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::vector<std::string> words;
    try {
        words =
            CommandHost::SplitWords(std::string_view(reinterpret_cast<const char*>(data), size));
    } catch (const CommandHost::CommandLineError&) {
        return 0;
    }
    // A batch reads files; the batch runner has its own tests.
    for (const std::string& word : words) {
        if (word.starts_with("--batch") || word.starts_with("--force")) {
            return 0;
        }
    }
    if (++inputsOnHost > kInputsPerHost) {
        FreshHost();
    }
    Discard out;
    Discard err;
    host->Main(words, out, err);
    return 0;
}
