#include "support/LiveHostTest.h"

#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace Testing {

namespace {

// Moves the process into a network namespace and a mount namespace of its own, once. In the
// mount namespace /run is a fresh tmpfs (with an empty /run/netns for named namespaces) and /etc
// an overlay whose changes land in that tmpfs, so that the host's files (resolv.conf, hosts) can
// be changed, renamed over and read as usual while the machine's own stay as they are. Nothing
// of it outlives the process. Why it can't be done, or empty.
std::string EnterPrivateNamespaces() {
    auto failed = [](const std::string& what) { return what + ": " + std::strerror(errno); };
    if (unshare(CLONE_NEWNET | CLONE_NEWNS) != 0) {
        return failed("the kernel refuses a network and mount namespace");
    }
    if (mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) {
        return failed("can't make the mounts private");
    }
    if (mount("tmpfs", "/run", "tmpfs", 0, "mode=0755") != 0) {
        return failed("can't mount a tmpfs on /run");
    }
    for (const char* folder : {"/run/netns", "/run/autocli-etc", "/run/autocli-etc/changes",
                               "/run/autocli-etc/work"}) {
        if (mkdir(folder, 0755) != 0) {
            return failed(std::string("can't make ") + folder);
        }
    }
    if (mount("overlay", "/etc", "overlay", 0,
              "lowerdir=/etc,upperdir=/run/autocli-etc/changes,workdir=/run/autocli-etc/work") !=
        0) {
        return failed("can't lay an overlay over /etc");
    }
    return {};
}

const std::string& EnterPrivateNamespace() {
    static const std::string refusal = EnterPrivateNamespaces();
    return refusal;
}

bool LiveTestsRequired() {
    const char* required = std::getenv("AUTOCLI_REQUIRE_LIVE_TESTS");
    return required != nullptr && std::string(required) == "1";
}

}  // namespace

void LiveHostTest::SetUp() {
    CommandTest::SetUp();
    if (const std::string& refusal = EnterPrivateNamespace(); !refusal.empty()) {
        if (LiveTestsRequired()) {
            FAIL() << refusal;
        }
        GTEST_SKIP() << refusal;
    }
    HostSim::ChooseHost("linux");
}

void LiveHostTest::TearDown() {
    for (const std::string& link : links_) {
        RunProgram("/bin/sh", {"-c", "ip link del " + link}, StateDirectory());
    }
    HostSim::ChooseHost("sim");
    CommandTest::TearDown();
}

std::string LiveHostTest::Witness(const std::string& command) {
    const ProcessResult result = RunProgram("/bin/sh", {"-c", command}, StateDirectory());
    EXPECT_EQ(result.status, 0) << command << ": " << result.err;
    return result.out;
}

nlohmann::json LiveHostTest::WitnessJson(const std::string& command) {
    return nlohmann::json::parse(Witness(command));
}

void LiveHostTest::AddVethPair(const std::string& name, const std::string& peer) {
    Witness("ip link add " + name + " type veth peer name " + peer);
    links_.push_back(name);
}

ProcessResult LiveHostTest::LiveAutocli(const std::vector<std::string>& arguments,
                                        const std::map<std::string, std::string>& environment) {
    std::vector<std::string> withHost{"--host=linux"};
    withHost.insert(withHost.end(), arguments.begin(), arguments.end());
    return RunAutocli(withHost, StateDirectory(), environment);
}

}  // namespace Testing
