// In-process control of the simulated host, for tests and tools: which state directory the
// process uses, injected faults, and a trace of the host operations made.
#pragma once

#include <string>
#include <vector>

namespace HostSim {

// The directory this process keeps its state in from now on, in place of HOSTSIM_DIR and the
// default. An open database of another directory is closed.
void UseStateDirectory(const std::string& directory);
// The state directory in force: the one set above, else HOSTSIM_DIR, else
// ${XDG_STATE_HOME:-$HOME/.local/state}/hostsim.
std::string StateDirectory();

// The host this process acts on from now on, "sim" or "linux", in place of AUTOCLI_HOST.
void ChooseHost(const std::string& host);

// Replaces the host in the state directory with the one a profile (JSON text, the format of
// `hostsim export`) describes; sections the profile leaves out are empty.
void ImportProfile(const std::string& profileJson);

// While set, the operation ("Pnic::SetLinkState") throws HostCtlException with `message`,
// for any object when `object` is empty, else only for that object. Faults from
// HOSTSIM_FAULTS apply as well.
void InjectFault(const std::string& operation, const std::string& object,
                 const std::string& message);
void ClearFaults();

struct OperationCall {
    std::string operation;  // "Interface::Operation"
    std::string object;     // the object's name, empty where the operation has none
    bool operator==(const OperationCall&) const = default;
};

// Turns a switch of the host's feature table on or off ("kelmNicDpuTransportTag").
void SetFeature(const std::string& name, bool on);

// Starts recording every host operation that passes the fault choke point.
void StartTrace();
// Stops recording and returns the operations in the order they were made.
std::vector<OperationCall> StopTrace();

}  // namespace HostSim
