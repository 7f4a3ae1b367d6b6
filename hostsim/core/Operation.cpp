#include "hostsim/core/Operation.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "hostctl/HostCtlException.h"
#include "hostsim/Control.h"
#include "hostsim/core/OperationNames.h"

namespace HostSim {

namespace {

struct Fault {
    std::string operation;
    std::string object;  // empty: any object
    std::string message;
};

// Edits (insertions, deletions, substitutions) that turn `a` into `b`.
std::size_t EditDistance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) {
        row[j] = j;
    }
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            std::size_t above = row[j];
            row[j] =
                std::min({row[j] + 1, row[j - 1] + 1,
                          diagonal + (std::tolower(static_cast<unsigned char>(a[i - 1])) ==
                                              std::tolower(static_cast<unsigned char>(b[j - 1]))
                                          ? 0
                                          : 1)});
            diagonal = above;
        }
    }
    return row[b.size()];
}

bool IsOperation(std::string_view name) {
    // A binary search over the indices of the sorted names.
    std::size_t first = 0;
    std::size_t last = OperationCount();
    while (first < last) {
        const std::size_t middle = first + (last - first) / 2;
        if (OperationName(middle) < name) {
            first = middle + 1;
        } else {
            last = middle;
        }
    }
    return first < OperationCount() && OperationName(first) == name;
}

// Why `name` is no operation, with the one meant when one is close: "there is no host operation
// NetworkInfo::GetPnic; did you mean NetworkInfo::GetPnics?".
std::string UnknownOperation(std::string_view name) {
    std::string text = "there is no host operation " + std::string(name);
    std::string_view closest;
    std::size_t best = std::max<std::size_t>(2, name.size() / 4) + 1;
    for (std::size_t i = 0; i < OperationCount(); ++i) {
        const std::string_view known = OperationName(i);
        if (std::size_t distance = EditDistance(name, known); distance < best) {
            closest = known;
            best = distance;
        }
    }
    if (!closest.empty()) {
        return text + "; did you mean " + std::string(closest) + "?";
    }
    if (name.find("::") == std::string_view::npos) {
        return text + "; an entry is Interface::Operation[@object][=message]";
    }
    return text;
}

std::string_view Trim(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\n\r";
    std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// Entries "Interface::Operation[@object][=message]" separated by ';', blanks around the
// operation and the object allowed, empty entries skipped. An entry without a message fails
// with "<operation> failed". An entry that names no operation, or names an empty object, is
// refused: a fault that can never fire would let a test pass without its fault.
std::vector<Fault> ParseFaults(std::string_view text, std::string& error) {
    std::vector<Fault> faults;
    while (!text.empty()) {
        std::size_t semicolon = text.find(';');
        std::string_view entry = text.substr(0, semicolon);
        text.remove_prefix(semicolon == std::string_view::npos ? text.size() : semicolon + 1);
        if (Trim(entry).empty()) {
            continue;
        }
        std::size_t equals = entry.find('=');
        std::string_view target = entry.substr(0, equals);
        std::size_t at = target.find('@');
        Fault fault{
            std::string(Trim(target.substr(0, at))),
            at == std::string_view::npos ? std::string() : std::string(Trim(target.substr(at + 1))),
            equals == std::string_view::npos ? std::string()
                                             : std::string(entry.substr(equals + 1))};
        std::string problem;
        if (!IsOperation(fault.operation)) {
            problem = UnknownOperation(fault.operation);
        } else if (at != std::string_view::npos && fault.object.empty()) {
            problem = "no object follows the @";
        }
        if (!problem.empty()) {
            error = "HOSTSIM_FAULTS entry \"" + std::string(Trim(entry)) + "\": " + problem;
            return {};
        }
        if (fault.message.empty()) {
            fault.message = fault.operation + " failed";
        }
        faults.push_back(std::move(fault));
    }
    return faults;
}

struct OperationControl {
    OperationControl() {
        const char* text = std::getenv("HOSTSIM_FAULTS");
        faults = ParseFaults(text != nullptr ? text : "", invalidFaults);
    }
    std::vector<Fault> faults;
    // Why HOSTSIM_FAULTS was refused; every operation then fails with it.
    std::string invalidFaults;
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
    if (!control.invalidFaults.empty()) {
        throw HostCtl::Lib::HostCtlException(control.invalidFaults);
    }
    ThrowMatching(control.injected, operation, object);
    ThrowMatching(control.faults, operation, object);
}

void InjectFault(const std::string& operation, const std::string& object,
                 const std::string& message) {
    if (!IsOperation(operation)) {
        throw HostCtl::Lib::HostCtlException("Unable to inject a fault: " +
                                             UnknownOperation(operation));
    }
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
