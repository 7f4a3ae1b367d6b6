#include "hostsim/core/Operation.h"

#include <cstdlib>
#include <string_view>
#include <vector>

#include "hostctl/HostCtlException.h"
#include "hostctl/Misc.h"
#include "hostsim/Control.h"

namespace HostSim {

namespace {

struct Fault {
    std::string operation;
    std::string object;  // empty: any object
    std::string message;
};

// Entries "Interface::Operation[@object]=message" separated by ';', blanks around the target
// allowed. An entry without a message fails with "<operation> failed"; an entry whose target
// is empty or more than one word matches nothing.
std::vector<Fault> ParseFaults(std::string_view text) {
    std::vector<std::string> entries;
    HostCtl::Misc::StringTokenize(text, entries, ";");
    std::vector<Fault> faults;
    for (const std::string& entry : entries) {
        std::size_t equals = entry.find('=');
        std::vector<std::string> words;
        HostCtl::Misc::StringTokenize(std::string_view(entry).substr(0, equals), words, " \t\n");
        if (words.size() != 1) {
            continue;
        }
        const std::string& target = words[0];
        std::size_t at = target.find('@');
        Fault fault{target.substr(0, at), at == std::string::npos ? "" : target.substr(at + 1), ""};
        fault.message =
            equals == std::string::npos ? fault.operation + " failed" : entry.substr(equals + 1);
        faults.push_back(std::move(fault));
    }
    return faults;
}

struct OperationControl {
    std::vector<Fault> faults =
        ParseFaults(std::getenv("HOSTSIM_FAULTS") != nullptr ? std::getenv("HOSTSIM_FAULTS") : "");
    std::vector<Fault> injected;
    bool tracing = false;
    std::vector<OperationCall> trace;
};

OperationControl& Control() {
    static OperationControl control;
    return control;
}

void ThrowMatching(const std::vector<Fault>& faults, std::string_view operation,
                   const std::string& object) {
    for (const Fault& fault : faults) {
        if (fault.operation == operation && (fault.object.empty() || fault.object == object)) {
            throw HostCtl::Lib::HostCtlException(fault.message);
        }
    }
}

}  // namespace

void PassOperation(const char* operation, const std::string& object) {
    OperationControl& control = Control();
    if (control.tracing) {
        control.trace.push_back({operation, object});
    }
    ThrowMatching(control.injected, operation, object);
    ThrowMatching(control.faults, operation, object);
}

void InjectFault(const std::string& operation, const std::string& object,
                 const std::string& message) {
    Control().injected.push_back({operation, object, message});
}

void ClearFaults() {
    Control().injected.clear();
}

void StartTrace() {
    Control().trace.clear();
    Control().tracing = true;
}

std::vector<OperationCall> StopTrace() {
    Control().tracing = false;
    std::vector<OperationCall> trace;
    trace.swap(Control().trace);
    return trace;
}

}  // namespace HostSim
