// Fixtures for the simulated host's tests: a fresh state directory per test, profiles written
// to files, and work spread over several processes.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "hostctl/Pnic.h"
#include "hostsim/Control.h"
#include "hostsim/core/Json.h"
#include "support/CommandTest.h"

namespace HostSimTesting {

class HostTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    const std::string& Directory() const { return state_->Path(); }
    std::string DatabaseFile() const { return Directory() + "/host.db"; }
    // Writes `profile` to a file of the state directory's neighbourhood and returns its path.
    std::string WriteProfile(const HostSim::Json& profile, const std::string& name = "profile");
    // Replaces the host with `profile` through the hostsim tool; expects success.
    void InitHost(const std::vector<std::string>& options);
    // Closes the store's connection, so that the next operation opens and checks it again.
    void Reconnect();
    // The whole host as the hostsim tool exports it.
    HostSim::Json ExportHost();
    // Ends the process of a death test with `status`, after removing the directories its own
    // copy of the fixture made (an exit skips the fixture's destructor).
    [[noreturn]] void ExitRemovingDirectories(int status);

private:
    std::unique_ptr<Testing::TemporaryDirectory> state_;
    std::unique_ptr<Testing::TemporaryDirectory> files_;
};

// The names of NICs, in order, skipping null entries.
std::vector<std::string> Names(const std::vector<std::unique_ptr<HostCtl::Network::Pnic>>& pnics);
std::vector<std::string> AllNicNames();

// Runs `work(i)` for i in [0, count) in child processes at once, and `whileRunning` in this
// process once they are started; returns their exit statuses.
std::vector<int> RunInProcesses(int count, const std::function<int(int)>& work,
                                const std::function<void()>& whileRunning = {});

// The bytes of a file.
std::string FileBytes(const std::string& path);

// The host's own address of a NIC on PCI or of a pseudo NIC, numbered `number` within its kind.
std::string PciMac(std::uint32_t number);
std::string PseudoMac(std::uint32_t number);

// One NIC of a profile, on PCI or pseudo, with only the required fields.
HostSim::Json PciNic(const std::string& name, const std::string& mac);
HostSim::Json PseudoNic(const std::string& name, const std::string& mac,
                        const std::string& descriptor);

}  // namespace HostSimTesting
