// Every host operation of every firewall command, failed in turn: each run ends in an error
// and no root.
#include "FirewallSweepCases.h"

namespace {

class FirewallFaultSweep : public Testing::CommandTest {};

TEST_F(FirewallFaultSweep, FirewallStateCommands) {
    SweepTable(FirewallSweeps::kState);
}

TEST_F(FirewallFaultSweep, Rulesets) {
    SweepTable(FirewallSweeps::kRulesets);
}

TEST_F(FirewallFaultSweep, RulesetClientsAndAllowedAddresses) {
    SweepTable(FirewallSweeps::kClientsAndAllowedAddresses);
}

}  // namespace
