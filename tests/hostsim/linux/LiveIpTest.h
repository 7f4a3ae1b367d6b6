// A fixture for the IP commands on the live host: in the test's own namespace, a veth pair v0
// and v1, both up, with IPv6 on and no duplicate address detection (so that an address is
// usable at once), and v0 holding 192.0.2.1/24. Named namespaces the test makes through ip
// netns go with it.
#pragma once

#include <arpa/inet.h>

#include <string>
#include <vector>

#include "support/LiveHostTest.h"

namespace Testing {

inline constexpr char kNotAvailable[] = "not available on a Linux host";

class LiveIpTest : public LiveHostTest {
protected:
    void SetUp() override {
        LiveHostTest::SetUp();
        if (IsSkipped() || HasFatalFailure()) {
            return;
        }
        Witness(
            "echo 0 > /proc/sys/net/ipv6/conf/default/disable_ipv6 && "
            "echo 0 > /proc/sys/net/ipv6/conf/default/accept_dad && ip link set lo up");
        AddVethPair("v0", "v1");
        Witness("ip link set v0 up && ip link set v1 up && ip addr add 192.0.2.1/24 brd + dev v0");
    }

    void TearDown() override {
        LiveHostTest::TearDown();
        for (const std::string& name : namespaces_) {
            RunProgram("/bin/sh", {"-c", "ip netns del " + name}, StateDirectory());
        }
    }

    // A named namespace made by ip netns, which the host sees as a netstack.
    void AddNamespace(const std::string& name) {
        Witness("ip netns add " + name);
        namespaces_.push_back(name);
    }
    // A named namespace that the test makes otherwise, removed with it if it is still there.
    void RemoveWithTest(const std::string& name) { namespaces_.push_back(name); }

    // The mask of an IPv4 or IPv6 prefix length in address form: "255.255.255.0",
    // "ffff:ffff:ffff:ffff::".
    static std::string Mask(int family, unsigned prefixLength) {
        unsigned char bytes[16] = {};
        for (unsigned bit = 0; bit < prefixLength; ++bit) {
            bytes[bit / 8] |= static_cast<unsigned char>(0x80u >> (bit % 8));
        }
        char text[INET6_ADDRSTRLEN] = {};
        inet_ntop(family, bytes, text, sizeof text);
        return text;
    }

private:
    std::vector<std::string> namespaces_;
};

}  // namespace Testing
