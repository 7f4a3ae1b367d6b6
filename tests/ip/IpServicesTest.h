// The fixture of the IP services tests: run a command of `network ip ...` or `network multicast
// ...` and read its rows as text, or its outcome as messages and root.
#pragma once

#include "support/CommandTest.h"

namespace IpServicesTesting {

using Words = std::vector<std::string>;

// What a run left: its messages, and whether a true root stands beside them.
struct Outcome {
    Words messages;
    bool trueRoot = false;
    bool operator==(const Outcome&) const = default;
};

class IpServicesTest : public Testing::CommandTest {
protected:
    // The rows of the list that `words` gives, each as the texts of `fields` (ints in decimal).
    std::vector<Words> Table(const Words& words, const Words& fields);
    // One column of that list.
    Words Column(const Words& words, const std::string& field);
    // A change that must succeed: a true root and no message.
    void Change(const Words& words);

    Outcome Report(const Words& words);

    // The MAC address the host's neighbour cache of `netstack` holds for `address`.
    std::string NeighborMac(const std::string& netstack, const std::string& address);
};

void PrintTo(const Outcome& outcome, std::ostream* out);

}  // namespace IpServicesTesting
