// What each command that makes the network model does when the host can't make it: the one
// table the fault sweeps check a failing NetworkFactory::GetNetworkInfo or NetworkInfoImpl
// constructor against. Most commands make the model inside their guarded block and report the
// failure; a few make it ahead of the block, and the failure leaves the command for the command
// host to report.
#pragma once

#include <string>
#include <vector>

#include "commandhost/cli/CommandHost.h"

namespace Testing {

// The message of every fault the sweeps inject.
inline constexpr char kInjectedFault[] = "injected fault";

struct ModelFailure {
    // The command's path, as the command host names it: "network nic list".
    std::string command;
    CommandHost::ExitStatus status;
    // The one message of the run with kInjectedFault as the host's words: the command's error
    // message, or the command host's own when the exception left the command.
    std::string message;
};

// The line of a command whose failure to make the model leaves it: the command host's message.
inline ModelFailure Escapes(const std::string& command) {
    return {command, CommandHost::ExitException,
            "Unexpected exception in '" + command +
                "': HostCtl::Lib::HostCtlException: " + kInjectedFault};
}

// The line of a command that reports the failure: its error message, `prefix` and the host's
// words.
inline ModelFailure Reported(const std::string& command, const std::string& prefix) {
    return {command, CommandHost::ExitCommandError, prefix + kInjectedFault};
}

inline const std::vector<ModelFailure> kModelFailures{
    // Made ahead of the guarded block.
    Escapes("network ens lcore add"),
    Escapes("network ens lcore affinity get"),
    Escapes("network ens lcore affinity set"),
    Escapes("network ip get"),
    // Only with --netstack, whose look-up needs the model; without it the command makes none.
    Escapes("network ip interface add"),
    Escapes("network ip neighbor list"),
    Escapes("network ip neighbor remove"),
    Escapes("network ip set"),
    Escapes("network nic attachment list"),
    Escapes("network nic down"),
    Escapes("network nic list"),
    Escapes("network nic tso set"),
    Escapes("network sriovnic vf stats"),
    // Made inside the guarded block: the command's own message, with the host's words last.
    Reported("network ens lcore list", ""),
    Reported("network ens lcore remove", ""),
    Reported("network ens lcore switch add", ""),
    Reported("network ens lcore switch get", ""),
    Reported("network ens lcore switch remove", ""),
    Reported("network ens maxLcores get", ""),
    Reported("network ens maxLcores set", ""),
    Reported("network ip connection list", "Unable to get connection list: "),
    Reported("network ip interface ipv6 address add",
             "Error adding IPv6 address for the interface kelm0. Error was: "),
    Reported("network ip interface ipv6 set",
             "Error changing IPv6 configuration for the interface kelm0. Error was : "),
    Reported("network ip interface tag add",
             "Error setting tag Provisioning on interface kelm0. Error was: "),
    Reported("network ip interface tag remove",
             "Error removing tag Management from interface kelm5. Error was: "),
    Reported("network ip netstack add", "Unable to add Netstack Instance. Error was : "),
    Reported("network ip netstack get",
             "Error getting Netstack instance configuration. Error was: "),
    Reported("network ip netstack list", ""),
    Reported("network ip netstack remove", "Unable to Remove Netstack Instance. Error was : "),
    Reported("network ip netstack set", "Error setting configuration"),
    Reported("network ip route ipv6 add", ""),
    Reported("network ip route ipv6 remove", ""),
    Reported("network multicast group list", ""),
    Reported("network nic attachment add", "Failed to attach uplink hwnic1 to hwnic0: "),
    Reported("network nic attachment remove", "Failed to detach uplink hwnic3 from hwnic2: "),
    Reported("network nic coalesce get", ""),
    Reported("network nic coalesce high get", ""),
    Reported("network nic coalesce high set", ""),
    Reported("network nic coalesce low get", ""),
    Reported("network nic coalesce low set", ""),
    Reported("network nic coalesce set", ""),
    Reported("network nic cso get", ""),
    Reported("network nic cso set", ""),
    Reported("network nic eeprom change", ""),
    Reported("network nic eeprom dump", ""),
    Reported("network nic get", ""),
    Reported("network nic hwCap activated list", ""),
    Reported("network nic hwCap supported list", ""),
    Reported("network nic negotiate restart", ""),
    Reported("network nic pauseParams list", ""),
    Reported("network nic pauseParams set", ""),
    Reported("network nic queue count get", ""),
    Reported("network nic queue count set", ""),
    Reported("network nic queue filterclass list", ""),
    Reported("network nic queue loadbalancer list", ""),
    Reported("network nic queue loadbalancer plugin list", ""),
    Reported("network nic queue loadbalancer plugin set", ""),
    Reported("network nic queue loadbalancer set", ""),
    Reported("network nic queue loadbalancer state list", ""),
    Reported("network nic queue loadbalancer state set", ""),
    Reported("network nic register dump", ""),
    Reported("network nic ring current get", ""),
    Reported("network nic ring current set", ""),
    Reported("network nic ring preset get", ""),
    Reported("network nic selftest run", ""),
    Reported("network nic set", ""),
    Reported("network nic sg get", ""),
    Reported("network nic sg set", ""),
    Reported("network nic software list", ""),
    Reported("network nic software set", ""),
    Reported("network nic tso get", ""),
    Reported("network nic up", ""),
    Reported("network sriovnic list", "Unable to list NICs.  Error was "),
    Reported("network sriovnic vf list", "Unable to get VF Info. Error:"),
    Reported("network vswitch dvs zanvex list", ""),
    Reported("network vswitch standard list", ""),
    Reported("network vswitch standard portgroup list", ""),
};

// Whether a failure of `operation` is a failure to make the network model.
bool MakesModel(const std::string& operation);

// The line of kModelFailures for the command at `path`; null when there is none.
const ModelFailure* FindModelFailure(const std::string& path);

}  // namespace Testing
