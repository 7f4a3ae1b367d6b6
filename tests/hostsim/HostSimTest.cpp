#include "HostSimTest.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>

#include "hostsim/values/LocalMac.h"
#include "kelmctl/NetworkInfoImpl.h"

namespace HostSimTesting {

void HostTest::SetUp() {
    state_ = std::make_unique<Testing::TemporaryDirectory>();
    files_ = std::make_unique<Testing::TemporaryDirectory>();
    HostSim::UseStateDirectory(state_->Path());
    HostSim::ClearFaults();
}

void HostTest::ExitRemovingDirectories(int status) {
    state_.reset();
    files_.reset();
    std::exit(status);
}

void HostTest::TearDown() {
    HostSim::ClearFaults();
    HostSim::StopTrace();
}

std::string HostTest::WriteProfile(const HostSim::Json& profile, const std::string& name) {
    std::string path = files_->Path() + "/" + name + ".json";
    std::ofstream(path) << profile.dump(2);
    return path;
}

void HostTest::InitHost(const std::vector<std::string>& options) {
    std::vector<std::string> arguments{"init"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    auto result = Testing::RunHostsim(arguments, Directory());
    ASSERT_EQ(result.status, 0) << result.err;
}

void HostTest::Reconnect() {
    HostSim::UseStateDirectory(files_->Path());
    HostSim::UseStateDirectory(state_->Path());
}

HostSim::Json HostTest::ExportHost() {
    auto result = Testing::RunHostsim({"export"}, Directory());
    EXPECT_EQ(result.status, 0) << result.err;
    return HostSim::Json::parse(result.out);
}

std::vector<std::string> Names(const std::vector<std::unique_ptr<HostCtl::Network::Pnic>>& pnics) {
    std::vector<std::string> names;
    for (const auto& pnic : pnics) {
        if (pnic) {
            names.push_back(pnic->GetName());
        }
    }
    return names;
}

std::vector<std::string> AllNicNames() {
    return Names(KelmCtl::Network::NetworkInfoImpl().GetPnics(HostCtl::Network::PnicGetAll));
}

std::vector<int> RunInProcesses(int count, const std::function<int(int)>& work,
                                const std::function<void()>& whileRunning) {
    std::vector<pid_t> children;
    for (int i = 0; i < count; ++i) {
        pid_t child = fork();
        if (child == 0) {
            int status = 1;
            try {
                status = work(i);
            } catch (...) {
                status = 3;
            }
            _exit(status);
        }
        children.push_back(child);
    }
    if (whileRunning) {
        whileRunning();
    }
    std::vector<int> statuses;
    for (pid_t child : children) {
        int status = 0;
        waitpid(child, &status, 0);
        statuses.push_back(WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status));
    }
    return statuses;
}

std::string FileBytes(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

std::string PciMac(std::uint32_t number) {
    return HostSim::LocalMac(HostSim::MacKind::PciNic, number);
}

std::string PseudoMac(std::uint32_t number) {
    return HostSim::LocalMac(HostSim::MacKind::PseudoNic, number);
}

HostSim::Json PciNic(const std::string& name, const std::string& mac) {
    return {{"name", name},
            {"pci", {{"address", "0000:04:00.0"}, {"vendor", "Tarn"}, {"device", "T1"}}},
            {"driver", "tarn1g"},
            {"speed", 1000},
            {"mac", mac}};
}

HostSim::Json PseudoNic(const std::string& name, const std::string& mac,
                        const std::string& descriptor) {
    return {{"name", name},
            {"descriptor", descriptor},
            {"driver", "kelmusb"},
            {"speed", 1000},
            {"mac", mac}};
}

}  // namespace HostSimTesting
