// A fixture for tests on the live Linux host: the test process moves into a network namespace
// and a mount namespace of its own (once; every live test of the process shares them and
// removes what it made), and the host library acts on them. The machine's own links, /etc and
// /run/netns are never seen or touched: in the test's mount namespace /run is a fresh tmpfs and
// /etc an overlay whose changes stay in it.
#pragma once

#include <nlohmann/json.hpp>

#include <string>

#include "support/CommandTest.h"

namespace Testing {

class LiveHostTest : public CommandTest {
protected:
    // Skips the test with the kernel's reason where it refuses a namespace, unless
    // AUTOCLI_REQUIRE_LIVE_TESTS=1 asks for the live tests to run (CI sets it where they can).
    void SetUp() override;
    void TearDown() override;

    // Runs `command` with /bin/sh in the namespace: the independent tools (ip, ethtool) that
    // witness what the host did. Fails the test when it fails.
    std::string Witness(const std::string& command);
    nlohmann::json WitnessJson(const std::string& command);
    // A veth pair, removed with the test.
    void AddVethPair(const std::string& name, const std::string& peer);
    // Runs the autocli binary on the live host, in the namespace.
    ProcessResult LiveAutocli(const std::vector<std::string>& arguments,
                              const std::map<std::string, std::string>& environment = {});

private:
    std::vector<std::string> links_;
};

}  // namespace Testing
