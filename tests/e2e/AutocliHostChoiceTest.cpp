// Which host the autocli binary acts on, and what a process on the simulated host loads.
#include <gtest/gtest.h>

#include "support/CommandTest.h"

namespace {

using Testing::RunAutocli;

class AutocliHostChoice : public ::testing::Test {
protected:
    Testing::TemporaryDirectory state_;
};

TEST_F(AutocliHostChoice, TheOptionOverridesTheVariableAndAnUnknownHostIsRefused) {
    auto result = RunAutocli({"--host=sim", "network", "nic", "list"}, state_.Path(),
                             {{"AUTOCLI_HOST", "linux"}});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_NE(result.out.find("hwnic0"), std::string::npos);

    result = RunAutocli({"--host=Linux", "network", "nic", "list"}, state_.Path());
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "Unknown host 'Linux'. Did you mean 'linux'? Hosts: sim, linux.\n");

    result = RunAutocli({"network", "nic", "list"}, state_.Path(), {{"AUTOCLI_HOST", "vm"}});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.err, "Unknown host 'vm' in AUTOCLI_HOST. Hosts: sim, linux.\n");
}

// The live driver is a module of its own: a command on the simulated host never loads it, nor
// the kernel libraries behind it.
TEST_F(AutocliHostChoice, TheSimulatedHostLoadsNothingOfTheLiveHost) {
    const auto result = RunAutocli({"network", "nic", "list"}, state_.Path(),
                                   {{"LD_DEBUG", "libs"}, {"AUTOCLI_HOST", "sim"}});
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_NE(result.err.find("libkelmctl.so"), std::string::npos) << result.err;
    for (const char* library : {"liblinuxhost", "libmnl", "libpci"}) {
        EXPECT_EQ(result.err.find(library), std::string::npos) << library;
    }
}

}  // namespace
