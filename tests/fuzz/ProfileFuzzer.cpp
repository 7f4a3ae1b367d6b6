// libFuzzer target: arbitrary text as a profile through the profile reader and a whole import,
// the path of `hostsim import`, on a throwaway host; a host that takes it must export again.
// Whatever the text, the host answers with its own HostCtlException or takes it; any other
// exception, a crash or a leak is a finding.
//
// With FUZZ_SEED_DIRECTORY set, the target writes seeds there and exits: the built-in default
// host whole, each of its sections alone, and the empty host.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "hostctl/HostCtlException.h"
#include "hostsim/Control.h"
#include "hostsim/core/Profile.h"
#include "hostsim/core/Store.h"

namespace {

namespace fs = std::filesystem;

std::string hostDirectory;

void WriteSeeds(const fs::path& directory) {
    fs::create_directories(directory);
    const HostSim::Json profile = HostSim::BuiltinProfile("default");
    std::ofstream(directory / "default") << profile.dump(1);
    std::ofstream(directory / "empty") << "{}";
    for (const auto& [section, content] : profile.items()) {
        std::ofstream(directory / section) << HostSim::Json{{section, content}}.dump(1);
    }
    std::printf("wrote %zu seeds to %s\n", profile.size() + 2, directory.c_str());
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    if (const char* seeds = std::getenv("FUZZ_SEED_DIRECTORY")) {
        WriteSeeds(seeds);
        std::exit(0);
    }
    hostDirectory =
        (fs::temp_directory_path() / ("hostsim-fuzz-" + std::to_string(getpid()))).string();
    fs::create_directories(hostDirectory);
    fs::permissions(hostDirectory, fs::perms::owner_all);
    HostSim::UseStateDirectory(hostDirectory);
    std::atexit([] { fs::remove_all(hostDirectory); });
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        HostSim::ImportProfile(std::string(reinterpret_cast<const char*>(data), size));
    } catch (const HostCtl::Lib::HostCtlException&) {
        return 0;
    }
    HostSim::ExportHost(HostSim::Store()).dump();
    return 0;
}
